// SPDX-License-Identifier: MIT
#include <ordwel/buffer.h>
#include <ordwel/ds.h>

int main()
{
    ordwel::buffer bytes(20, static_cast<unsigned char>('x'));
    ordwel::ds_og::mask_set_bit(12);
    ordwel::ds_og::print(12, "decoded %d frames\n", 250);
    ordwel::ds_og::print_buf(12, bytes.begin(), bytes.size());
}

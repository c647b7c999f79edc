// SPDX-License-Identifier: MIT
#include <cstdio>
#include <string>

#include <ordwel/timecode.h>

int main()
{
    ordwel::timecode tc("00:00:59;29@29.97");          // a drop-frame NTSC label
    ++tc;                                               // 00:01:00;02: ;00 and ;01 are skipped
    unsigned int frames = tc.total_frames();            // 1800, the true frame count
    std::string label = ordwel::string_with_timecode(tc, true);
    tc -= 1800;                                         // back to 00:00:00;00
    std::string hour = ordwel::string_with_timecode(
        ordwel::timecode_with_timestamp(ordwel::timecode::mode_25, ordwel::timestamp(90061500, 1000), 1),
        true);                                          // "25:01:01:12"
    unsigned long long ntp = ordwel::timestamp(3, 2).as_ntptime();   // 32.32 fixed point: 0x180000000
    std::printf("%s %u %s %s %llx\n", label.c_str(), frames, ordwel::string_with_timecode(tc, true).c_str(),
                hour.c_str(), ntp);
}

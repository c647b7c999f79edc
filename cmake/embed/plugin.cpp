// SPDX-License-Identifier: MIT
#include <string>

#include <ordwel/string_helpers.h>
#include <ordwel/timecode.h>

// A plugin entry point that uses the embedded library, so that its code is linked in.
extern "C" __attribute__((visibility("default"))) int embed_plugin_label_length()
{
    std::string const l_label = ordwel::string_with_timecode(ordwel::timecode("01:00:00:00@25"), false);
    return static_cast<int>(ordwel::trimmed(l_label, " ").size());
}

// SPDX-License-Identifier: MIT
#ifndef ORDWEL_TOOLBOX_OPTIONS_H
#define ORDWEL_TOOLBOX_OPTIONS_H

// The ids of the toolbox's options: a letter's code for an option with a short form, a negative
// number for one with a long name only. Commands have options of their own, so one letter may
// stand for different options in different commands.
namespace ordwel_toolbox {

constexpr int k_opt_help = 'h';
constexpr int k_opt_html = -2;
constexpr int k_opt_version = -3;
// Hidden: the bash completion script, written by the build.
constexpr int k_opt_bash_completion = -4;
constexpr int k_opt_json = -5;

constexpr int k_opt_verbose = 'v';
constexpr int k_opt_list = 'l';
constexpr int k_opt_junit = -6;

constexpr int k_opt_skip = 's';
constexpr int k_opt_length = 'n';

constexpr int k_opt_decode = 'd';
constexpr int k_opt_encode = 'e';
// One long-only option for each part of a URL, from the scheme to the fragment: the part at index i
// of ordwel::k_url_parts has the id k_opt_url_part - i.
constexpr int k_opt_url_part = -10;
constexpr int k_opt_set = -40;
constexpr int k_opt_show_password = -41;

constexpr int k_opt_separator = 's';

constexpr int k_opt_mode = 'm';
constexpr int k_opt_relabel = 'r';
constexpr int k_opt_convert = 'c';
constexpr int k_opt_add = 'a';
constexpr int k_opt_total = 't';
constexpr int k_opt_frames = 'f';
constexpr int k_opt_lenient = -50;
constexpr int k_opt_tmcd = -51;

constexpr int k_opt_count = 'c';
constexpr int k_opt_codec = -60;

// What the parser hands over for a word of no option.
constexpr int k_word = 1;

} // namespace ordwel_toolbox

#endif

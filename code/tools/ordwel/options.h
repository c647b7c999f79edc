#ifndef ORDWEL_TOOLBOX_OPTIONS_H
#define ORDWEL_TOOLBOX_OPTIONS_H

// The ids of the toolbox's options: a letter's code for an option with a short form, a negative
// number for one with a long name only.
namespace ordwel_toolbox {

constexpr int k_opt_help = 'h';
constexpr int k_opt_html = -2;
constexpr int k_opt_version = -3;

constexpr int k_opt_verbose = 'v';
constexpr int k_opt_list = 'l';

// What the parser hands over for a word of no option.
constexpr int k_word = 1;

} // namespace ordwel_toolbox

#endif

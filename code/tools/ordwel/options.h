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

constexpr int k_opt_decode = 'd';
constexpr int k_opt_encode = 'e';
// One long-only option for each part of a URL, from the scheme to the fragment.
constexpr int k_opt_url_scheme = -10;
constexpr int k_opt_url_authority = -11;
constexpr int k_opt_url_domain = -12;
constexpr int k_opt_url_user = -13;
constexpr int k_opt_url_password = -14;
constexpr int k_opt_url_host = -15;
constexpr int k_opt_url_service = -16;
constexpr int k_opt_url_path = -17;
constexpr int k_opt_url_params = -18;
constexpr int k_opt_url_query = -19;
constexpr int k_opt_url_fragment = -20;

constexpr int k_opt_separator = 's';

constexpr int k_opt_mode = 'm';
constexpr int k_opt_add = 'a';
constexpr int k_opt_total = 't';

// What the parser hands over for a word of no option.
constexpr int k_word = 1;

} // namespace ordwel_toolbox

#endif

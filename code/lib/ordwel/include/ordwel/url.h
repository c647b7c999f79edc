// SPDX-License-Identifier: MIT
#ifndef ORDWEL_URL_H
#define ORDWEL_URL_H

#include <map>
#include <string>
#include <utility>

#include <ordwel/export.h>

// URLs held as plain strings. There is no parsed form: every getter scans the text anew and gives
// back a part of it, every setter scans it and edits it in place. Nothing here fails or rejects
// anything; odd text gives an odd, but always defined, result.
//
// The text reads as
//
//     scheme : // domain ; user : password @ host : service path ; params ? query # fragment
//
// where every part may be absent with its delimiter. The domain is a network logon domain in front
// of the user (not the host's DNS domain), the service is whatever follows the host's ':' (a port
// number or a service name, never interpreted), and a host in brackets ("[fe80::1]") may hold
// colons. The scheme is the text in front of the first ':' as long as no '/' and no '#' precedes
// that ':' ("C" in "C:/dir" is a scheme too), and the authority needs the "//".
//
// A getter's bool means decode (percent-decoding as url_decode does), a setter's bool means encode
// (url_encode with '/' encoded as well, except in url_set_path, which keeps its separators). An empty
// value removes the part together with the delimiter that it leaves behind; a non-empty value brings
// the delimiters that the part needs. url_new_x is a copy followed by url_set_x.

namespace ordwel {

// --- Reading -------------------------------------------------------------------------------------

/// The text in front of the scheme's ':', empty without a scheme. Never decoded. url_scheme is
/// another name of uri_scheme.
///@{
[[nodiscard]] ORDWEL_API std::string uri_scheme(std::string const &a_url);
[[nodiscard]] ORDWEL_API std::string url_scheme(std::string const &a_url);
///@}
/// Everything behind the scheme's ':', fragment included; the whole text without a scheme.
[[nodiscard]] ORDWEL_API std::string uri_scheme_specific(std::string const &a_url);

/// The authority: everything between the "//" and the path (domain, user, password, host and
/// service with their delimiters); empty without "//".
[[nodiscard]] ORDWEL_API std::string url_authority(std::string const &a_url, bool a_decode);
/// One part of the text, without its delimiters, decoded when a_decode is true; empty when the
/// part is absent. The domain, user and password stand in front of the '@' of the authority, the
/// service behind the host's ':', the path from the end of the authority to ';', '?' or '#', the
/// params behind the path's ';', the query behind '?' and the fragment behind '#'.
///@{
[[nodiscard]] ORDWEL_API std::string url_domain(std::string const &a_url, bool a_decode);
[[nodiscard]] ORDWEL_API std::string url_user(std::string const &a_url, bool a_decode);
[[nodiscard]] ORDWEL_API std::string url_password(std::string const &a_url, bool a_decode);
///@}
/// The host without the brackets of an IPv6 address. Never decoded.
[[nodiscard]] ORDWEL_API std::string url_host(std::string const &a_url);
/// \copydoc url_domain
///@{
[[nodiscard]] ORDWEL_API std::string url_service(std::string const &a_url, bool a_decode);
[[nodiscard]] ORDWEL_API std::string url_path(std::string const &a_url, bool a_decode);
[[nodiscard]] ORDWEL_API std::string url_params(std::string const &a_url, bool a_decode);
[[nodiscard]] ORDWEL_API std::string url_query(std::string const &a_url, bool a_decode);
[[nodiscard]] ORDWEL_API std::string url_fragment(std::string const &a_url, bool a_decode);
///@}

/// The component split into key-value pairs like strutil::kvmap_with_kvstr: the last of equal keys
/// wins, a pair without a_kv_separator gets an empty value. With a_decode each key and each value is
/// decoded after the split, so an encoded separator never splits.
///@{
[[nodiscard]] ORDWEL_API std::map<std::string, std::string> url_query_kvmap(std::string const &a_url, bool a_decode,
                                                                            char a_pair_separator, char a_kv_separator);
[[nodiscard]] ORDWEL_API std::map<std::string, std::string>
url_params_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator);
[[nodiscard]] ORDWEL_API std::map<std::string, std::string>
url_fragment_kvmap(std::string const &a_url, bool a_decode, char a_pair_separator, char a_kv_separator);
///@}
/// The same, added to a_out: a key of the component replaces an equal key that a_out held.
///@{
ORDWEL_API void url_query_kvmap(std::map<std::string, std::string> &a_out, std::string const &a_url, bool a_decode,
                                char a_pair_separator, char a_kv_separator);
ORDWEL_API void url_params_kvmap(std::map<std::string, std::string> &a_out, std::string const &a_url, bool a_decode,
                                 char a_pair_separator, char a_kv_separator);
ORDWEL_API void url_fragment_kvmap(std::map<std::string, std::string> &a_out, std::string const &a_url, bool a_decode,
                                   char a_pair_separator, char a_kv_separator);
///@}

// --- Coding --------------------------------------------------------------------------------------

/// Keeps letters, digits and ! $ & ' ( ) + , - . / = _ and writes every other byte as '%' and two
/// lowercase hex digits. With a_slash, '/' becomes "%2f" as well.
[[nodiscard]] ORDWEL_API std::string url_encode(std::string const &a_text, bool a_slash);
/// Turns "%hh" into its byte, either case of hex digit accepted and a non-digit read as 0 ("%4z" is
/// '@'). A sequence that gives the byte 0 ("%00", "%zz") stays as it is, as does a '%' in the last
/// two bytes. '+' is not a blank.
[[nodiscard]] ORDWEL_API std::string url_decode(std::string const &a_text);

/// For logs: the URL with a password replaced by an encoded "********".
[[nodiscard]] ORDWEL_API std::string url_protected_output(std::string const &a_url);

/// Cuts at the first a_separator, which stays with the second half: ("a", "=b") for "a=b". Without
/// a separator the whole text and "".
[[nodiscard]] ORDWEL_API std::pair<std::string, std::string> split_scheme(std::string const &a_text, char a_separator);

// --- Editing -------------------------------------------------------------------------------------

/// Replaces the authority, bringing the "//" when the URL had none.
///@{
ORDWEL_API std::string &url_set_authority(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_authority(std::string const &a_url, std::string const &a_value,
                                                       bool a_encode);
///@}
/// Replaces the logon domain. A domain always comes with its ';' and an '@', even without a user:
/// "x://D;@host".
///@{
ORDWEL_API std::string &url_set_domain(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_domain(std::string const &a_url, std::string const &a_value,
                                                    bool a_encode);
///@}
/// Replaces the user or the password, with the delimiters that the part needs.
///@{
ORDWEL_API std::string &url_set_user(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_user(std::string const &a_url, std::string const &a_value, bool a_encode);
ORDWEL_API std::string &url_set_password(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_password(std::string const &a_url, std::string const &a_value,
                                                      bool a_encode);
///@}
/// Replaces the host. Written as given: an IPv6 address must come in its brackets to be read back.
///@{
ORDWEL_API std::string &url_set_host(std::string &a_url, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string url_new_host(std::string const &a_url, std::string const &a_value);
///@}
/// Replaces the service behind the host's ':'.
///@{
ORDWEL_API std::string &url_set_service(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_service(std::string const &a_url, std::string const &a_value,
                                                     bool a_encode);
///@}
/// Replaces the path; encoding keeps its '/' separators. Behind an authority a path is rooted:
/// "x://h" with "n" gives "x://h/n"; behind a bare scheme it may stay relative: "x:" with "n" gives
/// "x:n".
///@{
ORDWEL_API std::string &url_set_path(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_path(std::string const &a_url, std::string const &a_value, bool a_encode);
///@}
/// Replaces the params (behind ';'), the query (behind '?') or the fragment (behind '#') by a text.
///@{
ORDWEL_API std::string &url_set_params(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_params(std::string const &a_url, std::string const &a_value,
                                                    bool a_encode);
ORDWEL_API std::string &url_set_query(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_query(std::string const &a_url, std::string const &a_value, bool a_encode);
ORDWEL_API std::string &url_set_fragment(std::string &a_url, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string url_new_fragment(std::string const &a_url, std::string const &a_value,
                                                      bool a_encode);
///@}

/// The part written from a map like strutil::kvstr_with_kvmap (entries in key order; an empty value
/// goes without a_kv_separator). With a_encode each key and value is encoded, '/' included, before it
/// is joined; the separators stay as given. An empty map removes the part. url_encode keeps '&' and
/// '=', so with those separators a key or value that holds them divides again when it is read back;
/// separators that encoding replaces (';', ':', '#' ...) protect any text.
///@{
ORDWEL_API std::string &url_set_params(std::string &a_url, std::map<std::string, std::string> const &a_values,
                                       bool a_encode, char a_pair_separator, char a_kv_separator);
[[nodiscard]] ORDWEL_API std::string url_new_params(std::string const &a_url,
                                                    std::map<std::string, std::string> const &a_values, bool a_encode,
                                                    char a_pair_separator, char a_kv_separator);
ORDWEL_API std::string &url_set_query(std::string &a_url, std::map<std::string, std::string> const &a_values,
                                      bool a_encode, char a_pair_separator, char a_kv_separator);
[[nodiscard]] ORDWEL_API std::string url_new_query(std::string const &a_url,
                                                   std::map<std::string, std::string> const &a_values, bool a_encode,
                                                   char a_pair_separator, char a_kv_separator);
ORDWEL_API std::string &url_set_fragment(std::string &a_url, std::map<std::string, std::string> const &a_values,
                                         bool a_encode, char a_pair_separator, char a_kv_separator);
[[nodiscard]] ORDWEL_API std::string url_new_fragment(std::string const &a_url,
                                                      std::map<std::string, std::string> const &a_values, bool a_encode,
                                                      char a_pair_separator, char a_kv_separator);
///@}

/// The scheme, with its ':' added or removed as needed: "dir" with "s" gives "s:dir", "s:" with an
/// empty value gives "". Never encoded. The url_ forms are other names of the uri_ forms.
///@{
ORDWEL_API std::string &uri_set_scheme(std::string &a_url, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string uri_new_scheme(std::string const &a_url, std::string const &a_value);
ORDWEL_API std::string &url_set_scheme(std::string &a_url, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string url_new_scheme(std::string const &a_url, std::string const &a_value);
///@}
/// The scheme, its ':' and the value; the old fragment goes with the old scheme-specific part.
///@{
ORDWEL_API std::string &uri_set_scheme_specific(std::string &a_url, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string uri_new_scheme_specific(std::string const &a_url, std::string const &a_value);
///@}

/// Moves a logon domain written into the user ("dom/user", "dom\user") to the domain. A domain that
/// is there already stays, and the user's prefix is dropped.
ORDWEL_API void url_correct_domain(std::string &a_url);

// --- The path --------------------------------------------------------------------------------------
// The path functions of <ordwel/path.h> laid over the decoded path, with '/' as the separator. A
// changing operation writes the result back encoded (url_set_path with encoding), so afterwards the
// whole path is in this library's encoded form ("/a~b" comes back as "/a%7eb") and a "%2f" that was
// in it has become a separator. Path text handed in is plain, not encoded.

/// path_front, path_back, path_file, path_name, path_directory and path_suffix of the decoded path.
///@{
[[nodiscard]] ORDWEL_API std::string url_path_front(std::string const &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_back(std::string const &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_file(std::string const &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_name(std::string const &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_directory(std::string const &a_url, unsigned int a_levels);
[[nodiscard]] ORDWEL_API std::string url_path_suffix(std::string const &a_url, unsigned int a_count = 0);
///@}

/// The path operation of the same name (path_append, path_appended, ...) on the decoded path, the
/// result written back encoded. Behind an authority the path is rooted again when it is written
/// back, so popping the front of "x://h/a/b" (whose first component is the empty text in front of
/// the root) changes nothing.
///@{
ORDWEL_API std::string &url_path_append(std::string &a_url, std::string const &a_other);
[[nodiscard]] ORDWEL_API std::string url_path_appended(std::string const &a_url, std::string const &a_other);
ORDWEL_API std::string &url_path_push_back(std::string &a_url, std::string const &a_other);
[[nodiscard]] ORDWEL_API std::string url_path_pushed_back(std::string const &a_url, std::string const &a_other);
ORDWEL_API std::string &url_path_prepend(std::string &a_url, std::string const &a_other);
[[nodiscard]] ORDWEL_API std::string url_path_prepended(std::string const &a_url, std::string const &a_other);
ORDWEL_API std::string &url_path_push_front(std::string &a_url, std::string const &a_other);
[[nodiscard]] ORDWEL_API std::string url_path_pushed_front(std::string const &a_url, std::string const &a_other);
ORDWEL_API std::string &url_path_pop_back(std::string &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_popped_back(std::string const &a_url);
ORDWEL_API std::string &url_path_pop_front(std::string &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_popped_front(std::string const &a_url);
ORDWEL_API std::string &url_path_set_directory(std::string &a_url, std::string const &a_directory,
                                               unsigned int a_levels);
[[nodiscard]] ORDWEL_API std::string url_path_new_directory(std::string const &a_url, std::string const &a_directory,
                                                            unsigned int a_levels);
ORDWEL_API std::string &url_path_set_file(std::string &a_url, std::string const &a_file);
[[nodiscard]] ORDWEL_API std::string url_path_new_file(std::string const &a_url, std::string const &a_file);
ORDWEL_API std::string &url_path_set_name(std::string &a_url, std::string const &a_name);
[[nodiscard]] ORDWEL_API std::string url_path_new_name(std::string const &a_url, std::string const &a_name);
ORDWEL_API std::string &url_path_set_suffix(std::string &a_url, std::string const &a_suffix, unsigned int a_count = 0);
[[nodiscard]] ORDWEL_API std::string url_path_new_suffix(std::string const &a_url, std::string const &a_suffix,
                                                         unsigned int a_count = 0);
ORDWEL_API std::string &url_path_normalize(std::string &a_url);
[[nodiscard]] ORDWEL_API std::string url_path_normalized(std::string const &a_url);
ORDWEL_API std::string &url_path_root(std::string &a_url, std::string const &a_root);
[[nodiscard]] ORDWEL_API std::string url_path_rooted(std::string const &a_url, std::string const &a_root);
ORDWEL_API std::string &url_path_unroot(std::string &a_url, std::string const &a_root);
[[nodiscard]] ORDWEL_API std::string url_path_unrooted(std::string const &a_url, std::string const &a_root);
///@}

} // namespace ordwel

#endif

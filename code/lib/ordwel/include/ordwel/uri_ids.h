// SPDX-License-Identifier: MIT
#ifndef ORDWEL_URI_IDS_H
#define ORDWEL_URI_IDS_H

#include <string>

#include <ordwel/export.h>

// Identifiers written as short URIs in plain strings. A plid has four fields divided by '/':
//
//     plid:category/type/key/version
//
// The other kinds are made of URL parts (see <ordwel/url.h>):
//
//     egid:entity#instance     entity in the path, instance in the fragment
//     wtid:plid#instance       a whole plid as the path, instance in the fragment
//     port:id;param#type       id in the path, param in the params, type in the fragment
//     graph:id, workflow:id    id is everything behind the ':'
//
// Nothing here makes an identifier unique or checks its kind: every function works on any text.
// x_new() gives the empty identifier of its kind; setters change their argument in place and return
// it, x_new_y forms return a changed copy.

namespace ordwel {

// --- plid ----------------------------------------------------------------------------------------

/// "plid:"
[[nodiscard]] ORDWEL_API std::string plid_new();

/// The fields of a plid; the key decoded when a_decode is set. A field whose '/' in front is
/// missing reads empty. A '/' behind the version and whatever follows a '#' belong to no field.
///@{
[[nodiscard]] ORDWEL_API std::string plid_category(std::string const &a_plid);
[[nodiscard]] ORDWEL_API std::string plid_type(std::string const &a_plid);
[[nodiscard]] ORDWEL_API std::string plid_key(std::string const &a_plid, bool a_decode);
[[nodiscard]] ORDWEL_API std::string plid_version(std::string const &a_plid);
///@}

/// x_set_field changes a field in place and returns the argument; x_new_field returns a changed
/// copy. Setting a field that isn't there yet first adds the '/' it needs ("plid:cat" with version "V"
/// gives "plid:cat///V"). Values are written as given, so a '/' in them divides fields; only the key
/// may be encoded, which makes any text a key.
///@{
ORDWEL_API std::string &plid_set_category(std::string &a_plid, std::string const &a_value);
ORDWEL_API std::string &plid_set_type(std::string &a_plid, std::string const &a_value);
ORDWEL_API std::string &plid_set_key(std::string &a_plid, std::string const &a_value, bool a_encode);
ORDWEL_API std::string &plid_set_version(std::string &a_plid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string plid_new_category(std::string const &a_plid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string plid_new_type(std::string const &a_plid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string plid_new_key(std::string const &a_plid, std::string const &a_value, bool a_encode);
[[nodiscard]] ORDWEL_API std::string plid_new_version(std::string const &a_plid, std::string const &a_value);
///@}

// --- Scheme words ----------------------------------------------------------------------------------

/// The scheme words "egid", "wtid", "port", "graph" and "workflow", alive for the library's whole
/// life and safe to read from any thread.
///@{
[[nodiscard]] ORDWEL_API std::string const &egid_scheme();
[[nodiscard]] ORDWEL_API std::string const &wtid_scheme();
[[nodiscard]] ORDWEL_API std::string const &port_scheme();
[[nodiscard]] ORDWEL_API std::string const &graph_scheme();
[[nodiscard]] ORDWEL_API std::string const &workflow_scheme();
///@}

/// The scheme word and a ':'.
///@{
[[nodiscard]] ORDWEL_API std::string egid_new();
[[nodiscard]] ORDWEL_API std::string wtid_new();
[[nodiscard]] ORDWEL_API std::string port_new();
[[nodiscard]] ORDWEL_API std::string graph_new();
[[nodiscard]] ORDWEL_API std::string workflow_new();
///@}

// --- egid, wtid ------------------------------------------------------------------------------------

/// The fields of an egid and of a wtid: x_field reads one, x_set_field changes it in place and
/// returns the argument, x_new_field returns a changed copy. Every field is encoded on the way in
/// and decoded on the way out; entity and plid keep their '/'.
///@{
[[nodiscard]] ORDWEL_API std::string egid_entity(std::string const &a_egid);
ORDWEL_API std::string &egid_set_entity(std::string &a_egid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string egid_new_entity(std::string const &a_egid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string egid_instance(std::string const &a_egid);
ORDWEL_API std::string &egid_set_instance(std::string &a_egid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string egid_new_instance(std::string const &a_egid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string wtid_plid(std::string const &a_wtid);
ORDWEL_API std::string &wtid_set_plid(std::string &a_wtid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string wtid_new_plid(std::string const &a_wtid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string wtid_instance(std::string const &a_wtid);
ORDWEL_API std::string &wtid_set_instance(std::string &a_wtid, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string wtid_new_instance(std::string const &a_wtid, std::string const &a_value);
///@}

// --- port ------------------------------------------------------------------------------------------

/// The fields of a port: x_field reads one, x_set_field changes it in place and returns the
/// argument, x_new_field returns a changed copy. The id is written unencoded but read decoded: it
/// should be text that means the same either way. Param and type are encoded and decoded.
///@{
[[nodiscard]] ORDWEL_API std::string port_id(std::string const &a_port);
ORDWEL_API std::string &port_set_id(std::string &a_port, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string port_new_id(std::string const &a_port, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string port_param(std::string const &a_port);
ORDWEL_API std::string &port_set_param(std::string &a_port, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string port_new_param(std::string const &a_port, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string port_type(std::string const &a_port);
ORDWEL_API std::string &port_set_type(std::string &a_port, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string port_new_type(std::string const &a_port, std::string const &a_value);
///@}

// --- graph, workflow -------------------------------------------------------------------------------

/// The id of a graph and of a workflow: x_id reads it, x_set_id changes it in place and returns the
/// argument, x_new_id returns a changed copy. The id is all that stands behind the ':', a '#' and
/// what follows it included; never coded.
///@{
[[nodiscard]] ORDWEL_API std::string graph_id(std::string const &a_graph);
ORDWEL_API std::string &graph_set_id(std::string &a_graph, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string graph_new_id(std::string const &a_graph, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string workflow_id(std::string const &a_workflow);
ORDWEL_API std::string &workflow_set_id(std::string &a_workflow, std::string const &a_value);
[[nodiscard]] ORDWEL_API std::string workflow_new_id(std::string const &a_workflow, std::string const &a_value);
///@}

} // namespace ordwel

#endif

#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs every ordwel benchmark program beside its peers and rewrites the table in docs/performance.md.

    python3 code/lib/ordwel/bench/run_benchmarks.py [--build build/release] [--repetitions 3]
                                                    [--min-time 0.2] [--only PROGRAM ...] [--no-write]

Each program runs once with --benchmark_repetitions, the repetitions of its benchmarks interleaved in a
random order; the median of the repetitions is taken for each benchmark. A row of the table compares one ordwel benchmark with one peer benchmark measured in the same
program run: the ratio is ordwel's throughput divided by the peer's (above 1, ordwel is faster), from
bytes/s or items/s when both report it, else from the time per iteration. Rows whose peer was not built
(its Debian package missing at configure time) are left out. The table between the markers in
docs/performance.md is replaced, with the machine and the date above it.
"""

import argparse
import datetime
import json
import os
import platform
import subprocess
import sys

# (program, work, ordwel benchmark, peer benchmark, peer's name). A benchmark is named as Google
# Benchmark reports it, arguments included ("bm_buffer_append/4").
ROWS = [
    ("buffer", "append 4 B pieces", "bm_buffer_append/4", "bm_vector_append/4", "std::vector insert"),
    ("buffer", "append 64 B pieces", "bm_buffer_append/64", "bm_vector_append/64", "std::vector insert"),
    ("buffer", "append 1 KiB pieces", "bm_buffer_append/1024", "bm_vector_append/1024", "std::vector insert"),
    ("buffer", "resize in 100-byte steps", "bm_buffer_resize", "bm_vector_resize", "std::vector resize"),
    ("buffer", "string_with_format", "bm_string_with_format", "bm_snprintf_string", "snprintf measure + format"),
    ("timecode", "++ and QuickTime word", "ordwel_step_and_pack", "libavutil_step_and_pack", "libavutil"),
    ("timecode", "++ and text", "ordwel_step_and_text", "libavutil_step_and_text", "libavutil"),
    ("timecode", "90 kHz time to a label", "ordwel_label_from_90khz", "libavutil_label_from_90khz", "libavutil"),
    ("timecode", "as_ntptime", "ordwel_ntptime", "libavutil_ntptime", "av_rescale_rnd (not like-for-like)"),
    ("timecode", "SMPTE word of each label", "ordwel_smpte_word", "libavutil_smpte_word", "av_timecode_get_smpte"),
    ("timecode", "rescale, nearest", "ordwel_rescale", "libavutil_rescale", "av_rescale_rnd"),
    ("text", "tokenize_string", "bm_tokenize_delimiter", "bm_tokenize_delimiter_peer_boost_split", "boost::split"),
    ("text", "path_normalized", "bm_path_normalize", "bm_path_normalize_peer_lexically_normal", "lexically_normal"),
    ("text", "UTF-8 to wide", "bm_utf8_to_wide", "bm_utf8_to_wide_peer_iconv", "iconv"),
    ("text", "UTF-8 to wide", "bm_utf8_to_wide", "bm_utf8_to_wide_peer_wstring_convert", "wstring_convert"),
    ("text", "wide to UTF-8", "bm_wide_to_utf8", "bm_wide_to_utf8_peer_iconv", "iconv"),
    ("text", "wide to UTF-8", "bm_wide_to_utf8", "bm_wide_to_utf8_peer_wstring_convert", "wstring_convert"),
    ("url", "12 getters, 10,000 varied URLs, raw", "ordwel_all_getters", "curl_all_getters", "libcurl URL API"),
    ("url", "12 getters, 10,000 varied URLs, decoded", "ordwel_all_getters_decoded", "curl_all_getters_decoded",
     "libcurl URL API"),
    ("url", "12 getters, 4 KiB paths, raw", "ordwel_long_path_getters", "curl_long_path_getters", "libcurl URL API"),
    ("url", "12 getters, 4 KiB paths, decoded", "ordwel_long_path_getters_decoded", "curl_long_path_getters_decoded",
     "libcurl URL API"),
    ("url", "url_encode", "ordwel_url_encode", "curl_easy_escape_text", "curl_easy_escape"),
    ("url", "url_decode", "ordwel_url_decode", "curl_easy_unescape_text", "curl_easy_unescape"),
    ("url", "url_decode, 16-200 B, 3 % escaped", "ordwel_url_decode_short/3", "curl_easy_unescape_short/3",
     "curl_easy_unescape"),
    ("url", "url_decode, 16-200 B, 10 % escaped", "ordwel_url_decode_short/10", "curl_easy_unescape_short/10",
     "curl_easy_unescape"),
    ("url", "url_decode, 16-200 B, 40 % escaped", "ordwel_url_decode_short/40", "curl_easy_unescape_short/40",
     "curl_easy_unescape"),
    ("optparser", "20-word command line", "bm_optparser", "bm_getopt_long", "getopt_long"),
    ("concurrency", "mutex lock + unlock", "BM_mutex_lock_unlock_ordwel", "BM_mutex_lock_unlock_std", "std::mutex"),
    ("concurrency", "scoped guard", "BM_scoped_mutex_lock_ordwel", "BM_scoped_mutex_lock_std", "std::lock_guard"),
    ("concurrency", "semaphore ping-pong", "BM_semaphore_ping_pong_ordwel/real_time",
     "BM_semaphore_ping_pong_std/real_time", "std semaphore"),
    ("concurrency", "call queue, 1 producer", "BM_callqueue_throughput_ordwel/1/real_time",
     "BM_callqueue_throughput_asio/1/real_time", "Asio post + run"),
    ("concurrency", "call queue, 4 producers", "BM_callqueue_throughput_ordwel/4/real_time",
     "BM_callqueue_throughput_asio/4/real_time", "Asio post + run"),
    ("concurrency", "call queue, 8 producers", "BM_callqueue_throughput_ordwel/8/real_time",
     "BM_callqueue_throughput_asio/8/real_time", "Asio post + run"),
    ("concurrency", "call queue, 1 producer, owner naps when idle", "BM_callqueue_napping_ordwel/1/real_time",
     "BM_callqueue_napping_asio/1/real_time", "Asio post + poll"),
    ("concurrency", "call queue, 8 producers, owner naps when idle", "BM_callqueue_napping_ordwel/8/real_time",
     "BM_callqueue_napping_asio/8/real_time", "Asio post + poll"),
    ("concurrency", "blocking call round trip", "BM_callqueue_blocking_round_trip_ordwel/real_time",
     "BM_callqueue_blocking_round_trip_asio/real_time", "Asio post + promise"),
    ("stream", "buf::write 8 B pieces", "bm_stream_buf_write/8", "bm_stringstream_write/8", "std::stringstream"),
    ("stream", "mem::read 64 B pieces", "bm_stream_mem_read/64", "bm_istringstream_read/64", "std::istringstream"),
    ("stream", "cursor read_be<uint32>", "bm_bytestream_read_u32", "bm_istringstream_read_u32", "std::istringstream"),
    ("stream", "cursor read_be<uint32>", "bm_bytestream_read_u32", "bm_memcpy_read_u32", "memcpy + byte swap (bound)"),
    ("stream", "cursor read_u8", "bm_bytestream_read_u8", "bm_istringstream_read_u8", "std::istringstream"),
    ("media", "Annex B units of 1 MiB, in memory", "bm_annexb_units_memory/1048576",
     "bm_annexb_gstreamer_identify_nalu/1048576", "GStreamer identify_nalu"),
    ("media", "Annex B units of 1 MiB, from a stream::mem", "bm_annexb_units_stream/1048576",
     "bm_annexb_gstreamer_identify_nalu/1048576", "GStreamer identify_nalu"),
    ("media", "Annex B units of 4 MiB, in memory", "bm_annexb_units_memory/4194304",
     "bm_annexb_gstreamer_identify_nalu/4194304", "GStreamer identify_nalu"),
    ("media", "Annex B units of 4 MiB, from a stream::mem", "bm_annexb_units_stream/4194304",
     "bm_annexb_gstreamer_identify_nalu/4194304", "GStreamer identify_nalu"),
    ("codecs", "Base64 encode 64 KiB", "ordwel_base64_encode_buffer/65536", "openssl_base64_encode/65536", "OpenSSL"),
    ("codecs", "Base64 encode 64 KiB", "ordwel_base64_encode_buffer/65536", "libavutil_base64_encode/65536",
     "libavutil"),
    ("codecs", "Base64 encode 64 B", "ordwel_base64_encode_buffer/64", "openssl_base64_encode/64", "OpenSSL"),
    ("codecs", "Base64 decode 64 KiB", "ordwel_base64_decode_buffer/65536", "openssl_base64_decode/65536", "OpenSSL"),
    ("codecs", "Base64 decode 64 KiB", "ordwel_base64_decode_buffer/65536", "libavutil_base64_decode/65536",
     "libavutil"),
    ("codecs", "Base64 decode 64 B", "ordwel_base64_decode_buffer/64", "openssl_base64_decode/64", "OpenSSL"),
    ("codecs", "Base64 decode 64 KiB", "ordwel_base64_decode_buffer/65536", "memcpy_plain/65536",
     "memcpy of the bytes (bound)"),
    ("codecs", "Base64 URL-safe encode 64 KiB", "ordwel_base64url_encode_buffer/65536",
     "ordwel_base64_encode_buffer/65536", "ordwel, standard alphabet"),
    ("codecs", "Base64 URL-safe decode 64 KiB", "ordwel_base64url_decode_buffer/65536",
     "ordwel_base64_decode_buffer/65536", "ordwel, standard alphabet"),
    ("codecs", "Base64 strict decode 64 KiB", "ordwel_base64_decode_strict/65536", "ordwel_base64_decode_buffer/65536",
     "ordwel, lenient decode"),
    ("codecs", "Base64 strict decode 64 KiB", "ordwel_base64_decode_strict/65536", "openssl_base64_decode/65536",
     "OpenSSL"),
    ("codecs", "Base64 URL-safe strict decode 64 KiB", "ordwel_base64url_decode_strict/65536",
     "ordwel_base64_decode_buffer/65536", "ordwel, standard lenient decode"),
    ("codecs", "hex encode 64 KiB", "ordwel_hex_encode/65536", "openssl_hex_encode/65536", "OpenSSL"),
    ("codecs", "hex encode 64 KiB", "ordwel_hex_encode/65536", "boost_hex_encode/65536", "Boost.Algorithm"),
    ("codecs", "hex encode 64 KiB", "ordwel_hex_encode/65536", "memcpy_plain/65536", "memcpy of the bytes (bound)"),
    ("codecs", "hex decode 64 KiB", "ordwel_hex_decode/65536", "openssl_hex_decode/65536", "OpenSSL"),
    ("codecs", "hex decode 64 KiB", "ordwel_hex_decode/65536", "boost_hex_decode/65536", "Boost.Algorithm"),
    ("codecs", "hex decode 64 KiB", "ordwel_hex_decode/65536", "memcpy_plain/65536", "memcpy of the bytes (bound)"),
    ("codecs", "Base64 encode 64 KiB, scalar level", "ordwel_base64_encode_level_scalar/65536",
     "ordwel_base64_encode_level_kernel/65536", "ordwel at the processor's level"),
    ("codecs", "Base64 decode 64 KiB, scalar level", "ordwel_base64_decode_level_scalar/65536",
     "ordwel_base64_decode_level_kernel/65536", "ordwel at the processor's level"),
    ("codecs", "Base64 encode 64 KiB, SSE4.1 level", "ordwel_base64_encode_level_sse41/65536",
     "ordwel_base64_encode_level_scalar/65536", "ordwel at the scalar level"),
    ("codecs", "Base64 decode 64 KiB, SSE4.1 level", "ordwel_base64_decode_level_sse41/65536",
     "ordwel_base64_decode_level_scalar/65536", "ordwel at the scalar level"),
    ("codecs", "hex encode 64 KiB, scalar level", "ordwel_hex_encode_level_scalar/65536",
     "ordwel_hex_encode_level_kernel/65536", "ordwel at the processor's level"),
    ("codecs", "hex decode 64 KiB, scalar level", "ordwel_hex_decode_level_scalar/65536",
     "ordwel_hex_decode_level_kernel/65536", "ordwel at the processor's level"),
    ("coding", "network encode", "ordwel_network_encode", "boost_endian_network_encode", "Boost.Endian by hand"),
    ("coding", "network decode", "ordwel_network_decode", "boost_endian_network_decode", "Boost.Endian by hand"),
    ("coding", "network decode, varied items", "ordwel_network_decode_varied", "boost_endian_network_decode_varied",
     "Boost.Endian by hand"),
    ("coding", "network decode, typed messages", "ordwel_network_decode_messages",
     "boost_endian_network_decode_messages", "Boost.Endian by hand"),
    ("coding", "network decode, varied items", "ordwel_network_decode_varied", "walk_only_network_decode_varied",
     "the walk over the kinds alone (bound)"),
    ("coding", "network decode, typed messages", "ordwel_network_decode_messages",
     "walk_only_network_decode_messages", "the walk over the kinds alone (bound)"),
    ("bitstream", "bit read", "ordwel_bit_read", "gstreamer_bit_read", "GstBitReader"),
    ("bitstream", "bit write", "ordwel_bit_write", "gstreamer_bit_write", "GstBitWriter"),
    ("bitstream", "start-code search, 4 KiB blocks", "ordwel_find_start_codes/4096", "gstreamer_find_start_codes",
     "GStreamer masked scan"),
    ("bitstream", "start-code search, 4 KiB blocks", "ordwel_find_start_codes/4096", "memchr_scan",
     "memchr, one pass (bound)"),
    ("bitstream", "start-code search, 64 KiB blocks", "ordwel_find_start_codes/65536", "gstreamer_find_start_codes",
     "GStreamer masked scan"),
    ("bitstream", "start-code search, 64 KiB blocks", "ordwel_find_start_codes/65536", "memchr_scan",
     "memchr, one pass (bound)"),
    ("bitstream", "start-code search, scalar level", "ordwel_find_start_codes_scalar/4096",
     "gstreamer_find_start_codes", "GStreamer masked scan"),
    ("media", "emulation prevention removal 64 KiB", "bm_ep_remove/zero_rich:0", "bm_ep_memcpy",
     "memcpy of the bytes (bound)"),
    ("media", "emulation prevention removal 64 KiB", "bm_ep_remove/zero_rich:0", "bm_ep_remove_gstreamer_sei/zero_rich:0",
     "GStreamer H.264 SEI parse"),
    ("media", "emulation prevention removal 64 KiB, zero-rich", "bm_ep_remove/zero_rich:1", "bm_ep_memcpy",
     "memcpy of the bytes (bound)"),
    ("media", "emulation prevention removal 64 KiB, zero-rich", "bm_ep_remove/zero_rich:1",
     "bm_ep_remove_gstreamer_sei/zero_rich:1", "GStreamer H.264 SEI parse"),
    ("media", "emulation prevention insertion 64 KiB", "bm_ep_insert/zero_rich:0", "bm_ep_memcpy",
     "memcpy of the bytes (bound)"),
    ("media", "exp-Golomb ue(v) read", "bm_golomb_read_ue", "bm_golomb_read_ue_by_bit", "bit-by-bit reader by hand"),
    ("file", "whole-file read to a string", "bm_fileutil_read_string/real_time", "bm_stdio_read/real_time", "fread"),
    ("file", "whole-file read to a buffer", "bm_fileutil_read_buffer/real_time", "bm_stdio_read/real_time", "fread"),
    ("file", "whole-file write", "bm_fileutil_write/real_time", "bm_stdio_write/real_time", "fwrite"),
    ("process", "start to finish of /bin/true", "BM_process_round_trip/real_time",
     "BM_posix_spawn_waitpid/real_time", "posix_spawn + waitpid by hand"),
]

BEGIN = "<!-- benchmark table: begin (written by run_benchmarks.py) -->"
END = "<!-- benchmark table: end -->"
UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def run_program(a_path, a_repetitions, a_min_time):
    """The median aggregate of every benchmark of one program, by name."""
    l_out = subprocess.run(
        # The repetitions of a program's benchmarks run interleaved in a random order, so that a
        # drift of the machine during the run (another process, the kernel's background work)
        # falls on ordwel and its peer alike instead of on whichever runs first.
        [a_path, "--benchmark_format=json", f"--benchmark_repetitions={a_repetitions}",
         "--benchmark_enable_random_interleaving=true", "--benchmark_report_aggregates_only=true",
         f"--benchmark_min_time={a_min_time}"],
        check=True, capture_output=True, text=True).stdout
    l_medians = {}
    for l_bench in json.loads(l_out)["benchmarks"]:
        if l_bench.get("aggregate_name") == "median":
            l_medians[l_bench["run_name"]] = l_bench
    return l_medians


def ratio(a_ordwel, a_peer):
    """ordwel's throughput over the peer's."""
    for l_counter in ("bytes_per_second", "items_per_second"):
        if l_counter in a_ordwel and l_counter in a_peer:
            return a_ordwel[l_counter] / a_peer[l_counter]
    l_ordwel = a_ordwel["real_time"] * UNIT_NS[a_ordwel["time_unit"]]
    l_peer = a_peer["real_time"] * UNIT_NS[a_peer["time_unit"]]
    return l_peer / l_ordwel


def throughput(a_ordwel):
    """ordwel's own figure, in the unit its counter gives: bytes or items a second, else time a run."""
    if "bytes_per_second" in a_ordwel:
        return f"{a_ordwel['bytes_per_second'] / 1e9:.2f} GB/s"
    if "items_per_second" in a_ordwel:
        l_rate = a_ordwel["items_per_second"]
        # Slow items (a child process, a thread's wake-up) read better in thousands a second.
        if l_rate < 1e5:
            return f"{l_rate / 1e3:.2f} k/s"
        return f"{l_rate / 1e6:.2f} M/s"
    return f"{a_ordwel['real_time']:.3g} {a_ordwel['time_unit']}"


def machine():
    l_model = platform.processor() or platform.machine()
    try:
        with open("/proc/cpuinfo") as l_file:
            for l_line in l_file:
                if l_line.startswith("model name"):
                    l_model = l_line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    return f"{l_model}, {os.cpu_count()} cores"


def table(a_rows, a_args):
    l_lines = [BEGIN, "",
               f"Machine: {machine()}. Date: {datetime.date.today().isoformat()}. "
               f"Median of {a_args.repetitions} repetitions, interleaved, "
               f"`--benchmark_min_time={a_args.min_time}`.",
               "", "| Program | Work | ordwel | Peer | Ratio |", "|---|---|---|---|---|"]
    for l_program, l_work, l_peer, l_value, l_figure in a_rows:
        l_lines.append(f"| {l_program} | {l_work} | {l_figure} | {l_peer} | {l_value:.2f} |")
    l_lines += ["", END]
    return "\n".join(l_lines)


def main():
    l_parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    l_parser.add_argument("--build", default="build/release")
    l_parser.add_argument("--repetitions", type=int, default=3)
    l_parser.add_argument("--min-time", default="0.2")
    l_parser.add_argument("--only", nargs="*", default=None)
    l_parser.add_argument("--no-write", action="store_true")
    l_parser.add_argument("--doc", default="docs/performance.md")
    l_args = l_parser.parse_args()

    l_programs = sorted({l_row[0] for l_row in ROWS})
    if l_args.only:
        l_programs = [l_name for l_name in l_programs if l_name in l_args.only]
    l_rows = []
    for l_program in l_programs:
        l_path = os.path.join(l_args.build, "bin", f"ordwel_{l_program}_bench")
        if not os.access(l_path, os.X_OK):
            print(f"-- {l_program}: {l_path} is not built, left out", file=sys.stderr)
            continue
        print(f"-- {l_program}", file=sys.stderr)
        l_medians = run_program(l_path, l_args.repetitions, l_args.min_time)
        for l_name, l_work, l_ours, l_theirs, l_peer in ROWS:
            if l_name != l_program:
                continue
            if l_ours not in l_medians or l_theirs not in l_medians:
                print(f"   {l_work} vs {l_peer}: not measured, left out", file=sys.stderr)
                continue
            l_value = ratio(l_medians[l_ours], l_medians[l_theirs])
            print(f"   {l_work} vs {l_peer}: {l_value:.2f}", file=sys.stderr)
            l_rows.append((l_program, l_work, l_peer, l_value, throughput(l_medians[l_ours])))

    l_table = table(l_rows, l_args)
    if l_args.no_write:
        print(l_table)
        return
    with open(l_args.doc) as l_file:
        l_doc = l_file.read()
    if BEGIN in l_doc and END in l_doc:
        l_doc = l_doc[:l_doc.index(BEGIN)] + l_table + l_doc[l_doc.index(END) + len(END):]
    else:
        l_doc = l_doc.rstrip("\n") + "\n\n" + l_table + "\n"
    with open(l_args.doc, "w") as l_file:
        l_file.write(l_doc)


if __name__ == "__main__":
    main()

// SPDX-License-Identifier: MIT
#ifndef ORDWEL_ORDWEL_H
#define ORDWEL_ORDWEL_H

/// \file
/// Every public header of the library, for a program that wants all of it.
#include <ordwel/annexb.h>
#include <ordwel/base64.h>
#include <ordwel/bitstream.h>
#include <ordwel/buffer.h>
#include <ordwel/bytestream.h>
#include <ordwel/callqueue.h>
#include <ordwel/chunkbuf.h>
#include <ordwel/clock.h>
#include <ordwel/codecs.h>
#include <ordwel/coding.h>
#include <ordwel/condition.h>
#include <ordwel/conv.h>
#include <ordwel/cpuinfo.h>
#include <ordwel/ds.h>
#include <ordwel/emulation.h>
#include <ordwel/env.h>
#include <ordwel/es.h>
#include <ordwel/expgolomb.h>
#include <ordwel/export.h>
#include <ordwel/file.h>
#include <ordwel/fraction.h>
#include <ordwel/impersonate.h>
#include <ordwel/mutex.h>
#include <ordwel/object.h>
#include <ordwel/optparser.h>
#include <ordwel/path.h>
#include <ordwel/process.h>
#include <ordwel/rescale.h>
#include <ordwel/rwlock.h>
#include <ordwel/semaphore.h>
#include <ordwel/smpte.h>
#include <ordwel/stream.h>
#include <ordwel/string_helpers.h>
#include <ordwel/strutil.h>
#include <ordwel/test.h>
#include <ordwel/thread.h>
#include <ordwel/timecode.h>
#include <ordwel/timestamp.h>
#include <ordwel/types.h>
#include <ordwel/uri_ids.h>
#include <ordwel/url.h>
#include <ordwel/url_convert.h>
#include <ordwel/url_parts.h>
#include <ordwel/version.h>

#endif

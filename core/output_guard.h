// What a run may write, when the names come from files it did not make.
//
// A session file is untrusted input: its "rootname" and "report_root" are
// file names, never paths, so that no session can make a run write or create
// folders outside the output folder the user chose. And a run replaces only
// files of the kind it writes: the table of clipping depths only a previous
// table, the manifest only a previous manifest, a session only a session
// (row images are guarded by image::AtomicOutput).
#pragma once

#include <string>
#include <string_view>

#include "host/status.h"

namespace subsurf {
struct SessionOptions;
}

namespace subsurf::split {

// Fails, naming the session file and the record, when a name the run will use
// holds a folder separator ("/" or "\") or "..": "rootname" when the session
// uses it (override 1), "report_root" when the session asks for the report
// and the command line names no report file of its own.
Status checkSessionOutputNames(const SessionOptions& session, std::string_view sessionFile,
                               bool reportNamedElsewhere);

// Fails when path holds a non-empty file that does not begin as a table of
// clipping depths does.
Status checkReportReplaceable(const std::string& path);

// Fails when path holds a non-empty file that does not begin with the
// manifest's header line.
Status checkManifestReplaceable(const std::string& path);

// Fails when path holds a non-empty file that does not begin as a session
// file does, so that "slabber new *.jpg --force" cannot take the first
// photograph for the session's name and write over it.
Status checkSessionReplaceable(const std::string& path);

}  // namespace subsurf::split

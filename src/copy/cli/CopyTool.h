#pragma once

#include "platform/FileIo.h"

#include <QStringList>

namespace vindaro::disc {
class DiscFileLayer;
}

namespace vindaro::copy {

// The whole of `vindaro-copy` but for its file layer: parses `args` (without the program name), copies,
// prints log entries to stdout and the progress line to stderr, and answers the exit status.
// With `discs` (the disc layer `files` is, or reads through), a source on a disc that cannot be opened
// is refused before anything is written, and unreadable sectors are logged. Needs a QCoreApplication.
int runCopyTool(const QStringList& args, platform::FileLayer& files, disc::DiscFileLayer* discs = nullptr);

} // namespace vindaro::copy

#pragma once

#include "platform/FileIo.h"

#include <QStringList>

namespace vindaro::copy {

// The whole of `vindaro-copy` but for its file layer: parses `args` (without the program name), copies,
// prints log entries to stdout and the progress line to stderr, and answers the exit status.
// Needs a QCoreApplication.
int runCopyTool(const QStringList& args, platform::FileLayer& files);

} // namespace vindaro::copy

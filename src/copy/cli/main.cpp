// vindaro-copy: the block copy engine for scripts and machines without a display.
#include "CopyTool.h"
#include "disc/DiscFileLayer.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LocalFileLayer.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    vindaro::platform::LocalFileLayer local;
    vindaro::platform::LinuxVolumes volumes;
    // Video CD tracks are read through the disc's own sectors; everything else through the file system.
    vindaro::disc::DiscFileLayer files(local, volumes);
    return vindaro::copy::runCopyTool(app.arguments().mid(1), files, &files);
}

// vindaro-copy: the block copy engine for scripts and machines without a display.
#include "CopyTool.h"
#include "platform/linux/LocalFileLayer.h"

#include <QCoreApplication>

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    vindaro::platform::LocalFileLayer files;
    return vindaro::copy::runCopyTool(app.arguments().mid(1), files);
}

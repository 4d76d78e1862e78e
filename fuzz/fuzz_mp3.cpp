// MPEG header search and decoding on arbitrary bytes, then the summary text.
#include "FuzzInput.h"
#include "InfoText.h"
#include "MP3Information.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    vindaro::info::MP3Information mpeg;
    mpeg.getMpegInfo(input.device(), QStringLiteral("fuzz.mp3"));
    // A second run keeps or overwrites fields; it must not depend on anything but the bytes.
    input.device().seek(0);
    mpeg.getMpegInfo(input.device(), QStringLiteral("fuzz.mp3"));
    const QString text = vindaro::info::mpegTextBlock(mpeg);
    if (text.isEmpty() || mpeg.bitStr().size() > 32)
        __builtin_trap();
    return 0;
}

// SWF header reading on arbitrary bytes, then the Flash text block.
#include "FlashInformation.h"
#include "FuzzInput.h"
#include "InfoText.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    vindaro::info::FlashInformation flash;
    if (flash.getFlashInformation(input.device())) {
        if (flash.width() < 0 || flash.height() < 0 || flash.seconds() < 0)
            __builtin_trap();
        (void)vindaro::info::flashTextBlock(flash);
    }
    return 0;
}

// The local-header walk on arbitrary bytes: rows, counters and the summary.
#include "FuzzInput.h"
#include "ZipInformation.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    vindaro::info::ZipInformation zip;
    qint64 rows = 0;
    zip.readZip(input.device(), [&rows](const vindaro::info::ZipRow& row) {
        ++rows;
        if (row.text.isEmpty() || row.toolTip != row.text)
            __builtin_trap();
        return true;
    });
    // Every row needs at least a 30-byte header.
    if (rows != zip.entryCount() || rows * 30 > static_cast<qint64>(size) || zip.totalBytes() < 0)
        __builtin_trap();
    (void)zip.getFileQuantitySize();
    return 0;
}

// The resource previews on arbitrary bytes: every listing, the hex dump, the icon, cursor and bitmap files
// and the dialog template, each given the same resource.
#include "FuzzInput.h"
#include "resources/DialogTemplate.h"
#include "resources/ResourcePictures.h"
#include "resources/ResourceTexts.h"

using namespace vindaro::info::resources;

namespace {

void checkIconFile(const QByteArray& file, bool cursor)
{
    // ICONDIR with at least one 16-byte entry, of the asked kind
    if (!file.isEmpty() && (file.size() < 22 || file[0] != 0 || file[1] != 0 || file[2] != (cursor ? 2 : 1)))
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    const QByteArray& bytes = input.bytes();
    const int tableNumber = size > 0 ? data[0] + 1 : 1;
    qint64 listed = 0;
    for (const auto& listing : {menuListing(bytes), stringTableListing(bytes, tableNumber),
             acceleratorListing(bytes), messageTableListing(bytes)}) {
        if (listing)
            listed += textToAppend(*listing).text.size();
    }
    (void)listed;

    const QString dump = hexDump(bytes);
    if (dump.size() % 79 != 0 || (dump.isEmpty() != (size == 0 || size > 13264)))
        __builtin_trap();

    for (bool cursor : {false, true}) {
        checkIconFile(iconFileFromImage(bytes, cursor), cursor);
        // members are the bytes from an offset the member's number picks
        checkIconFile(iconFileFromGroup(
                          bytes, [&bytes](quint16 number) { return bytes.mid(number % 64); }, cursor),
            cursor);
    }
    const QByteArray bitmap = bitmapFileFromDib(bytes);
    if (!bitmap.isEmpty() && bitmap.size() != bytes.size() + 14)
        __builtin_trap();

    if (const auto dialog = parseDialogTemplate(bytes)) {
        // every control takes at least 18 bytes of the template
        if (static_cast<qsizetype>(dialog->controls.size()) * 18 > bytes.size())
            __builtin_trap();
    }
    return 0;
}

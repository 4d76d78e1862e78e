// ID3v1 reading, cleaning getters, the text block, setters fed with decoded bytes, and writing back.
#include "FuzzInput.h"
#include "InfoText.h"
#include "LocalText.h"
#include "Mp3ID3v1TAG.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzInput input(data, size);
    vindaro::info::Mp3ID3v1TAG tag;
    if (tag.getId3(input.device()))
        (void)vindaro::info::id3v1TextBlock(tag);

    // The first bytes as user text: setters must keep every field at its width and whole characters.
    const QString text = vindaro::info::decodeLocalText(input.bytes().left(64));
    tag.setTitle(text);
    tag.setComments(text);
    tag.setYear(text);
    tag.setTrack(text);
    tag.setGenre(text);
    if (tag.record().size() != vindaro::info::Mp3ID3v1TAG::kRecordBytes)
        __builtin_trap();
    (void)tag.title();
    (void)tag.comments();

    QByteArray file = input.bytes();
    const qsizetype before = file.size();
    QBuffer target(&file);
    target.open(QIODevice::ReadWrite);
    tag.saveId3(target);
    if (file.size() != before && file.size() != before + 128)
        __builtin_trap();
    return 0;
}

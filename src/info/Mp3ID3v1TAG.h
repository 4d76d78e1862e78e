#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QIODevice;

namespace vindaro::info {

// The 128-byte ID3v1 tag that may close an MP3 file, read and written in place.
//
// On disk, from the tag's first byte (the 128th from the end): "TAG" 3, title 30, artist 30, album 30,
// year 4, comment 29, track 1, genre 1. The object keeps the last 125 bytes as one record; text fields are
// raw bytes of the user's code page (GB18030 or UTF-8, told apart per field) and are decoded on read.
// Getters clean their field and store the cleaned bytes back, so a later saveId3() writes the cleaned value.
class Mp3ID3v1TAG
{
public:
    static constexpr qsizetype kTagBytes = 128;
    static constexpr qsizetype kRecordBytes = 125;

    Mp3ID3v1TAG();

    // True when the file ends in a tag, which is then loaded; otherwise the record stays as it was.
    bool getId3(const QString& path);
    bool getId3(QIODevice& device);
    // Writes the record over the file's tag, or appends a new tag when the file has none. Never truncates
    // and never creates a missing file. False when a step failed (the caller may stay silent about it).
    bool saveId3(const QString& path);
    bool saveId3(QIODevice& device);

    QString title();
    QString artist(); // "未知艺术家" when the field has no significant character
    QString album();
    QString year();
    QString comments();
    QString track() const; // empty for 0 and 32
    QString genre() const; // "None" past the list

    void setTitle(const QString& text);
    void setArtist(const QString& text);
    void setAlbum(const QString& text);
    void setYear(const QString& text);
    void setComments(const QString& text);
    // A number from 0 to 255 (rounded, halves to even); false and no change for anything else.
    bool setTrack(const QString& text);
    bool setGenre(const QString& text);

    // The 148 genre names, index 0 to 147.
    static QStringList getGenreList();
    // The raw record (offsets 3 to 127 of the tag).
    QByteArray record() const { return m_record; }

private:
    struct Field
    {
        qsizetype offset; // in the record
        qsizetype width;
    };
    QString trimmedField(Field field);
    void setField(Field field, const QString& text);

    QByteArray m_record; // always kRecordBytes long
};

} // namespace vindaro::info

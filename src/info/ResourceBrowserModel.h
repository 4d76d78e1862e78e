#pragma once

#include "pe/PeImage.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The resource browser of the property window without its widgets: the tree's nodes, the texts shown when
// a node is chosen, what each resource kind previews as, and the export's filters and writing rules.
namespace vindaro::info {

// A type node of the tree: an integer type has the key "#N" and the type table's text, a named type no key
// and its name as text.
struct ResourceTypeNode
{
    QString key;
    QString text;
};

// The type a node stands for: the number after "#" of its key, else its text.
QString resourceTypeOfNode(const QString& key, const QString& text);
// The name of a resource node: "#" in front of a number, anything else as it is.
QString resourceNameOfNode(const QString& text);
// The four lines put into the text box when a resource is chosen (the last the 77 hyphens), CR LF each.
QString resourceHeaderText(const QString& typeNodeText, const QString& name, qint64 size);
// The three lines printed in the picture area after the preview.
QStringList resourcePictureLines(const QString& typeNodeText, const QString& name, qint64 size);
inline constexpr const char kLoadError[] = "Error: Can not load resourse.";

enum class PreviewKind
{
    Picture, // `bytes` are .ico, .cur, .bmp or the named picture format for Qt's image readers
    Text,
    Dialog, // `bytes` are the dialog template
    Video, // `bytes` are the AVI file
};
// Which kind a type previews as (the upper-cased type text: "14", "AVI", "PNG", ...).
PreviewKind previewKindOf(const QString& typeText);

struct ResourcePreview
{
    PreviewKind kind = PreviewKind::Text;
    bool ok = false; // false: the window adds kLoadError
    QString text; // text kinds: what is appended to the text box
    QByteArray bytes; // picture, dialog and video kinds
    QString imageType; // pictures: "Icon/cursor (*.ico/*.cur)", "Bitmap (*.bmp)", ...
    bool cursor = false; // the picture is a cursor (its file is a .cur with the hot spot)
};

// One filter of the save dialog: a description and its pattern.
struct ExportFilter
{
    QString description;
    QString pattern;
};
// What the export writes for a type.
enum class ExportContent
{
    Picture, // icons and cursors (.ico/.cur or .bmp), bitmaps (.bmp)
    Text, // the text box's text
    AllStringTables, // type 6 chosen without a table: every table's listing
    Bytes, // the resource's own bytes
};
struct ExportPlan
{
    QList<ExportFilter> filters;
    ExportContent content = ExportContent::Bytes;
};
// The filters and content for the current type and name; nothing with "No resource selected!" when no
// name is chosen and the type is not 6.
std::optional<ExportPlan> exportPlanFor(const QString& typeText, const QString& nameText);
// Qt's filter string of a plan: "Cursor files (*.cur);;Bitmap files (*.bmp)".
QString qtFilterString(const QList<ExportFilter>& filters);
// What is written under the chosen file name: texts only to a name ending in "TXT"; pictures as icon or
// cursor files to "CUR"/"ICO", as bitmaps to "BMP", nothing otherwise; bytes always. Any case.
enum class ExportWrite
{
    Nothing,
    TextFile,
    IconFile,
    BitmapFile,
    RawBytes,
};
ExportWrite exportWriteFor(ExportContent content, const QString& fileName);

// The browser's state: the module read as data, and the previews of its resources.
class ResourceBrowserModel
{
public:
    // False when the file is no module; the tree then holds only the root.
    bool loadModule(const QString& path);
    bool hasModule() const { return m_image.isValid(); }
    const pe::PeImage& image() const { return m_image; }

    QList<ResourceTypeNode> typeNodes() const;
    // The texts of the resource nodes of a type (the number, or the name).
    QStringList resourceNodeTexts(const QString& typeText) const;

    QByteArray resourceData(const QString& typeText, const QString& nameText) const;
    qint64 resourceSize(const QString& typeText, const QString& nameText) const;

    // The preview of a resource; the text of text kinds already passed through the text-append rule.
    ResourcePreview preview(const QString& typeText, const QString& nameText) const;
    // The listings of every string table of the module, each followed by CR LF.
    QString allStringTables() const;

    // Where a video is written for playing: "avifile.tmp" in the user's cache folder (the temporary
    // folder when there is none), never a system folder.
    static QString videoTempPath();

private:
    QByteArray pictureFile(int type, const QByteArray& data) const;

    pe::PeImage m_image;
};

} // namespace vindaro::info

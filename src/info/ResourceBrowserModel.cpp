#include "ResourceBrowserModel.h"

#include "LocalText.h"
#include "pe/VersionInfo.h"
#include "resources/ResourcePictures.h"
#include "resources/ResourceTexts.h"

#include <QDir>
#include <QStandardPaths>

namespace vindaro::info {

namespace {

const QStringList kNamedPictureTypes
    = {QStringLiteral("JPG"), QStringLiteral("JPEG"), QStringLiteral("GIF"), QStringLiteral("PNG"),
        QStringLiteral("TIF"), QStringLiteral("TIFF"), QStringLiteral("WMF"), QStringLiteral("EMF")};

bool isNumber(const QString& text, int* value = nullptr)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (ok && value)
        *value = number;
    return ok && number >= 0 && !text.startsWith(QLatin1Char('+'));
}

QString typeKey(const QString& typeText)
{
    return typeText.toUpper();
}

ExportFilter textFilter()
{
    return {QStringLiteral("Save as text (*.txt)"), QStringLiteral("*.txt")};
}

QString appendable(const QString& text)
{
    return resources::textToAppend(text).text;
}

} // namespace

QString resourceTypeOfNode(const QString& key, const QString& text)
{
    return key.startsWith(QLatin1Char('#')) ? key.mid(1) : text;
}

QString resourceNameOfNode(const QString& text)
{
    return isNumber(text) ? QLatin1Char('#') + text : text;
}

QString resourceHeaderText(const QString& typeNodeText, const QString& name, qint64 size)
{
    const QString crlf = QStringLiteral("\r\n");
    return QStringLiteral("ResourceType: ") + typeNodeText + crlf + QStringLiteral("ResourseName: ") + name
        + crlf + QStringLiteral("ResourceSize: ") + QString::number(size) + QStringLiteral(" bytes") + crlf
        + QString(77, QLatin1Char('-')) + crlf;
}

QStringList resourcePictureLines(const QString& typeNodeText, const QString& name, qint64 size)
{
    return {QStringLiteral("ResourceType: ") + typeNodeText, QStringLiteral("ResourceName: ") + name,
        QStringLiteral("ResourceSize: ") + QString::number(size) + QStringLiteral(" bytes")};
}

PreviewKind previewKindOf(const QString& typeText)
{
    const QString type = typeKey(typeText);
    static const QStringList pictures = {QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"),
        QStringLiteral("12"), QStringLiteral("14")};
    if (pictures.contains(type) || kNamedPictureTypes.contains(type))
        return PreviewKind::Picture;
    if (type == QLatin1String("5") || type == QLatin1String("17"))
        return PreviewKind::Dialog;
    if (type == QLatin1String("AVI"))
        return PreviewKind::Video;
    return PreviewKind::Text;
}

std::optional<ExportPlan> exportPlanFor(const QString& typeText, const QString& nameText)
{
    const QString type = typeKey(typeText);
    if (nameText.isEmpty() && type != QLatin1String("6"))
        return std::nullopt;
    const ExportFilter bmp{QStringLiteral("Bitmap files (*.bmp)"), QStringLiteral("*.bmp")};
    if (type == QLatin1String("1") || type == QLatin1String("12"))
        return ExportPlan{
            {{QStringLiteral("Cursor files (*.cur)"), QStringLiteral("*.cur")}, bmp}, ExportContent::Picture};
    if (type == QLatin1String("2"))
        return ExportPlan{{bmp}, ExportContent::Picture};
    if (type == QLatin1String("3") || type == QLatin1String("14"))
        return ExportPlan{
            {{QStringLiteral("Icon files(*.ico)"), QStringLiteral("*.ico")}, bmp}, ExportContent::Picture};
    if (type == QLatin1String("6"))
        return ExportPlan{
            {textFilter()}, nameText.isEmpty() ? ExportContent::AllStringTables : ExportContent::Text};
    if (type == QLatin1String("4") || type == QLatin1String("9") || type == QLatin1String("11")
        || type == QLatin1String("16"))
        return ExportPlan{{textFilter()}, ExportContent::Text};
    // The HTML filter was always one text holding both parts; Qt reads it as description and pattern.
    if (type == QLatin1String("23") || type == QLatin1String("HTML"))
        return ExportPlan{
            {{QStringLiteral("HTML files (*.html)"), QStringLiteral("*.html")}}, ExportContent::Bytes};
    if (type == QLatin1String("AVI") || kNamedPictureTypes.contains(type)) {
        const QString lower = type.toLower();
        return ExportPlan{
            {{type + QStringLiteral(" files (*.") + lower + QLatin1Char(')'), QStringLiteral("*.") + lower}},
            ExportContent::Bytes};
    }
    return ExportPlan{{{QStringLiteral("Save as data (*.*)"), QStringLiteral("*.*")}}, ExportContent::Bytes};
}

QString qtFilterString(const QList<ExportFilter>& filters)
{
    QStringList parts;
    for (const ExportFilter& filter : filters) {
        // Qt takes the pattern from the parentheses; add it where the description names none.
        parts.append(filter.description.contains(QLatin1Char('('))
                ? filter.description
                : filter.description + QStringLiteral(" (") + filter.pattern + QLatin1Char(')'));
    }
    return parts.join(QStringLiteral(";;"));
}

ExportWrite exportWriteFor(ExportContent content, const QString& fileName)
{
    const QString ending = fileName.right(3).toUpper();
    switch (content) {
    case ExportContent::Text:
    case ExportContent::AllStringTables:
        return ending == QLatin1String("TXT") ? ExportWrite::TextFile : ExportWrite::Nothing;
    case ExportContent::Picture:
        if (ending == QLatin1String("CUR") || ending == QLatin1String("ICO"))
            return ExportWrite::IconFile;
        return ending == QLatin1String("BMP") ? ExportWrite::BitmapFile : ExportWrite::Nothing;
    case ExportContent::Bytes:
        return ExportWrite::RawBytes;
    }
    return ExportWrite::Nothing;
}

bool ResourceBrowserModel::loadModule(const QString& path)
{
    m_image = pe::PeImage::fromFile(path);
    return m_image.isValid();
}

QList<ResourceTypeNode> ResourceBrowserModel::typeNodes() const
{
    QList<ResourceTypeNode> nodes;
    if (!m_image.isValid())
        return nodes;
    for (const pe::ResourceId& type : m_image.resourceTypes()) {
        if (type.isInteger)
            nodes.append(
                {QLatin1Char('#') + QString::number(type.number), resources::resourceTypeText(type.number)});
        else
            nodes.append({QString(), type.name});
    }
    return nodes;
}

QStringList ResourceBrowserModel::resourceNodeTexts(const QString& typeText) const
{
    QStringList texts;
    if (!m_image.isValid())
        return texts;
    int number = 0;
    QList<pe::ResourceId> names;
    if (isNumber(typeText, &number) && number <= 0xFFFF)
        names = m_image.resourceNames(pe::ResourceId::fromNumber(static_cast<quint16>(number)));
    if (names.isEmpty())
        names = m_image.resourceNames(pe::ResourceId::fromName(typeText));
    texts.reserve(names.size());
    for (const pe::ResourceId& name : names)
        texts.append(name.text());
    return texts;
}

QByteArray ResourceBrowserModel::resourceData(const QString& typeText, const QString& nameText) const
{
    const auto entry = m_image.find(typeText, nameText);
    return entry ? m_image.data(*entry) : QByteArray();
}

qint64 ResourceBrowserModel::resourceSize(const QString& typeText, const QString& nameText) const
{
    return resourceData(typeText, nameText).size();
}

QByteArray ResourceBrowserModel::pictureFile(int type, const QByteArray& data) const
{
    switch (type) {
    case 1:
    case 3:
        return resources::iconFileFromImage(data, type == 1);
    case 2:
        return resources::bitmapFileFromDib(data);
    case 12:
    case 14: {
        const QString member = QString::number(type == 12 ? 1 : 3);
        return resources::iconFileFromGroup(
            data, [&](quint16 id) { return resourceData(member, QLatin1Char('#') + QString::number(id)); },
            type == 12);
    }
    default:
        return {};
    }
}

ResourcePreview ResourceBrowserModel::preview(const QString& typeText, const QString& nameText) const
{
    ResourcePreview result;
    const QString type = typeKey(typeText);
    result.kind = previewKindOf(type);
    if (type == QLatin1String("16")) {
        // The module's own version strings, whichever version resource was chosen; none is no failure.
        result.text = appendable(pe::moduleVersionText(m_image));
        result.ok = true;
        return result;
    }
    const QByteArray data = resourceData(typeText, nameText);
    if (data.isEmpty())
        return result;
    int number = 0;
    const bool integerType = isNumber(type, &number);
    switch (result.kind) {
    case PreviewKind::Picture:
        if (integerType) {
            result.bytes = pictureFile(number, data);
            result.imageType = resources::imageTypeText(number);
            result.cursor = number == 1 || number == 12;
        } else {
            result.bytes = data;
            result.imageType = type == QLatin1String("WMF") ? QStringLiteral("Metafile (*.wmf)")
                : type == QLatin1String("EMF")              ? QStringLiteral("Enh Metafile (*.emf)")
                                                            : QStringLiteral("Bitmap (*.bmp)");
        }
        result.ok = !result.bytes.isEmpty();
        return result;
    case PreviewKind::Dialog:
    case PreviewKind::Video:
        result.bytes = data;
        result.ok = true;
        return result;
    case PreviewKind::Text:
        break;
    }
    std::optional<QString> listing;
    if (type == QLatin1String("4")) {
        listing = resources::menuListing(data);
    } else if (type == QLatin1String("6")) {
        int table = 0;
        if (nameText.startsWith(QLatin1Char('#')) && isNumber(nameText.mid(1), &table))
            listing = resources::stringTableListing(data, table);
    } else if (type == QLatin1String("9")) {
        listing = resources::acceleratorListing(data);
    } else if (type == QLatin1String("11")) {
        listing = resources::messageTableListing(data);
    } else if (type == QLatin1String("23") || type == QLatin1String("HTML")) {
        listing = decodeLocalText(data);
    } else {
        listing = resources::hexDump(data);
    }
    if (!listing)
        return result;
    result.text = appendable(*listing);
    result.ok = true;
    return result;
}

QString ResourceBrowserModel::allStringTables() const
{
    QString all;
    for (const QString& name : resourceNodeTexts(QStringLiteral("6"))) {
        const ResourcePreview table = preview(QStringLiteral("6"), resourceNameOfNode(name));
        if (table.ok)
            all += table.text + QStringLiteral("\r\n");
    }
    return all;
}

QString ResourceBrowserModel::videoTempPath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (folder.isEmpty() || !QDir().mkpath(folder))
        folder = QDir::tempPath();
    return QDir(folder).filePath(QStringLiteral("avifile.tmp"));
}

} // namespace vindaro::info

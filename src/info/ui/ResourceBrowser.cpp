#include "ResourceBrowser.h"

#include "DialogMockup.h"
#include "files/ui/FileIcons.h"
#include "resources/DialogTemplate.h"

#include <QApplication>
#include <QAudioDevice> // before QAudioOutput, which Qt 6.4 leaves incomplete
#include <QAudioOutput>
#include <QBuffer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMediaDevices>
#include <QMediaMetaData>
#include <QMediaPlayer>
#include <QMessageBox>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QScopeGuard>
#include <QStyle>
#include <QTreeWidget>
#include <QUrl>
#include <QVideoWidget>

namespace vindaro::info::ui {

namespace {

constexpr int kKeyRole = Qt::UserRole; // the node's key: the root's path, "#N" of an integer type
const QString kDummy = QStringLiteral("Dummy");
const QString kCrLf = QStringLiteral("\r\n");

enum class NodeLevel
{
    Root,
    Type,
    Resource,
};

NodeLevel levelOf(const QTreeWidgetItem* item)
{
    if (!item->parent())
        return NodeLevel::Root;
    return item->parent()->parent() ? NodeLevel::Resource : NodeLevel::Type;
}

QString typeOfNode(const QTreeWidgetItem* typeNode)
{
    return resourceTypeOfNode(typeNode->data(0, kKeyRole).toString(), typeNode->text(0));
}

// Text1 shows CR LF as one line break; the CR LF text itself is kept for the export.
QString forDisplay(QString text)
{
    return text.replace(kCrLf, QStringLiteral("\n"));
}

} // namespace

PictureArea::PictureArea(QWidget* parent)
    : QWidget(parent)
{
    setAutoFillBackground(true);
}

void PictureArea::setPicture(const QImage& image)
{
    m_picture = image;
    update();
}

void PictureArea::printLine(const QString& line)
{
    m_lines.append(line);
    update();
}

void PictureArea::clear()
{
    m_picture = QImage();
    m_lines.clear();
    update();
}

QImage PictureArea::drawnPicture() const
{
    QImage drawn(m_picture.size(), QImage::Format_RGB32);
    drawn.fill(palette().color(QPalette::Window));
    QPainter painter(&drawn);
    painter.drawImage(0, 0, m_picture);
    return drawn;
}

void PictureArea::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    int y = 0;
    if (!m_picture.isNull()) {
        painter.drawImage(0, 0, m_picture);
        y = m_picture.height();
    }
    // Lines go below whatever child (dialog, video) covers the top of the area.
    for (const QWidget* child : findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
        if (child->isVisible())
            y = qMax(y, child->geometry().bottom() + 1);
    }
    const int lineHeight = fontMetrics().height();
    for (const QString& line : m_lines) {
        y += lineHeight;
        painter.drawText(2, y - fontMetrics().descent(), line);
    }
}

ResourceBrowser::ResourceBrowser(QWidget* parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("Pic_EXE_Dll"));
    picIcon_16B = new QLabel(this);
    picIcon_16B->setObjectName(QStringLiteral("picIcon_16B"));
    picIcon_16B->setGeometry(8, 6, 16, 16);
    txtShortFileNameB = new QLineEdit(this);
    txtShortFileNameB->setObjectName(QStringLiteral("txtShortFileNameB"));
    txtShortFileNameB->setReadOnly(true);
    txtShortFileNameB->setFrame(false);
    txtShortFileNameB->setGeometry(30, 4, 510, 20);

    TreeView1 = new QTreeWidget(this);
    TreeView1->setObjectName(QStringLiteral("TreeView1"));
    TreeView1->setHeaderHidden(true);
    TreeView1->setGeometry(8, 28, 180, 296);
    TreeView1->setUniformRowHeights(true);

    PicInfor = new PictureArea(this);
    PicInfor->setObjectName(QStringLiteral("PicInfor"));
    PicInfor->setGeometry(192, 28, 348, 296);
    Text1 = new QPlainTextEdit(this);
    Text1->setObjectName(QStringLiteral("Text1"));
    Text1->setReadOnly(true);
    Text1->setLineWrapMode(QPlainTextEdit::NoWrap);
    Text1->setGeometry(192, 28, 348, 296);
    PicInfor->hide();

    cmdOpen = new QPushButton(QStringLiteral("打开[&O]"), this);
    cmdOpen->setObjectName(QStringLiteral("cmdOpen"));
    cmdSave = new QPushButton(QStringLiteral("保存[&V]"), this);
    cmdSave->setObjectName(QStringLiteral("cmdSave"));
    cmdExit = new QPushButton(QStringLiteral("退出[&X]"), this);
    cmdExit->setObjectName(QStringLiteral("cmdExit"));
    cmdOpen->setGeometry(310, 330, 74, 24);
    cmdSave->setGeometry(388, 330, 74, 24);
    cmdExit->setGeometry(466, 330, 74, 24);

    askSaveName = [this](const QString& title, const QString& filter) {
        return QFileDialog::getSaveFileName(this, title, QString(), filter);
    };
    askOpenName = [this](const QString& title, const QString& filter) {
        return QFileDialog::getOpenFileName(this, title, QString(), filter);
    };
    showError
        = [this](const QString& title, const QString& text) { QMessageBox::critical(this, title, text); };

    connect(TreeView1, &QTreeWidget::itemExpanded, this, &ResourceBrowser::expandType);
    connect(TreeView1, &QTreeWidget::itemCollapsed, this, [this] { closePreview(); });
    connect(TreeView1, &QTreeWidget::currentItemChanged, this,
        [this](QTreeWidgetItem* current) { chooseNode(current); });
    connect(cmdOpen, &QPushButton::clicked, this, &ResourceBrowser::cmdOpen_Click);
    connect(cmdSave, &QPushButton::clicked, this, &ResourceBrowser::cmdSave_Click);
    connect(cmdExit, &QPushButton::clicked, this, &ResourceBrowser::exitRequested);
}

ResourceBrowser::~ResourceBrowser()
{
    closeBrowser();
}

void ResourceBrowser::openModule(const QString& path, const QString& rootText)
{
    closePreview();
    m_tempPath = ResourceBrowserModel::videoTempPath();
    m_path = path;
    m_model.loadModule(path);
    fillTree(path, rootText);
}

void ResourceBrowser::closeBrowser()
{
    closePreview(false);
    m_model = ResourceBrowserModel();
}

void ResourceBrowser::fillTree(const QString& rootKey, const QString& rootText)
{
    const QSignalBlocker blocker(TreeView1);
    TreeView1->clear();
    m_type.clear();
    m_name.clear();
    // The node images: a module, a folder per type, a document per resource.
    const QIcon rootIcon = style()->standardIcon(QStyle::SP_ComputerIcon);
    const QIcon typeIcon = style()->standardIcon(QStyle::SP_DirIcon);
    auto* root = new QTreeWidgetItem(QStringList{rootText});
    root->setIcon(0, rootIcon);
    root->setData(0, kKeyRole, rootKey);
    const QList<ResourceTypeNode> types = m_model.typeNodes();
    QList<QTreeWidgetItem*> typeItems;
    typeItems.reserve(types.size());
    for (const ResourceTypeNode& type : types) {
        auto* item = new QTreeWidgetItem(QStringList{type.text});
        item->setData(0, kKeyRole, type.key);
        item->setIcon(0, typeIcon);
        item->addChild(new QTreeWidgetItem(QStringList{kDummy}));
        typeItems.append(item);
    }
    root->addChildren(typeItems);
    TreeView1->addTopLevelItem(root);
    root->setExpanded(true);
}

QTreeWidgetItem* ResourceBrowser::rootNode() const
{
    return TreeView1->topLevelItem(0);
}

void ResourceBrowser::expandType(QTreeWidgetItem* typeNode)
{
    if (!typeNode || levelOf(typeNode) != NodeLevel::Type)
        return;
    if (typeNode->childCount() == 0 || typeNode->child(0)->text(0) != kDummy)
        return;
    delete typeNode->takeChild(0);
    const QIcon resourceIcon = style()->standardIcon(QStyle::SP_FileIcon);
    QList<QTreeWidgetItem*> items;
    for (const QString& name : m_model.resourceNodeTexts(typeOfNode(typeNode))) {
        auto* item = new QTreeWidgetItem(QStringList{name});
        item->setIcon(0, resourceIcon);
        items.append(item);
    }
    typeNode->addChildren(items);
}

void ResourceBrowser::setText(const QString& text)
{
    m_text = text;
    Text1->setPlainText(forDisplay(m_text));
}

// QPlainTextEdit has no 65,535-character limit to raise, so the limit textToAppend() asks for needs no
// action here; its "too long" lines still keep a huge listing out of the box.
void ResourceBrowser::appendText(const QString& text)
{
    m_text += text;
    Text1->setPlainText(forDisplay(m_text));
}

void ResourceBrowser::showTextKind(bool text)
{
    Text1->setVisible(text);
    PicInfor->setVisible(!text);
}

void ResourceBrowser::chooseNode(QTreeWidgetItem* item)
{
    closePreview();
    m_type.clear();
    m_name.clear();
    if (!item || levelOf(item) == NodeLevel::Root)
        return;
    if (levelOf(item) == NodeLevel::Type) {
        showTextKind(true);
        setText(QStringLiteral("ResourceType: ") + item->text(0));
        m_type = typeOfNode(item);
        return;
    }
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const auto restoreCursor = qScopeGuard([] { QGuiApplication::restoreOverrideCursor(); });
    const QTreeWidgetItem* typeNode = item->parent();
    m_type = typeOfNode(typeNode);
    m_name = resourceNameOfNode(item->text(0));
    const qint64 size = m_model.resourceSize(m_type, m_name);
    setText(resourceHeaderText(typeNode->text(0), m_name, size));

    const ResourcePreview preview = m_model.preview(m_type, m_name);
    bool ok = preview.ok;
    switch (preview.kind) {
    case PreviewKind::Text:
        showTextKind(true);
        if (ok)
            appendText(preview.text);
        break;
    case PreviewKind::Picture:
        showTextKind(false);
        ok = ok && showPicture(preview);
        break;
    case PreviewKind::Dialog:
        showTextKind(false);
        ok = ok && showDialog(preview);
        break;
    case PreviewKind::Video:
        showTextKind(false);
        ok = ok && playVideo(preview);
        break;
    }
    for (const QString& line : resourcePictureLines(typeNode->text(0), m_name, size))
        PicInfor->printLine(line);
    if (!ok) {
        if (Text1->isVisible() || preview.kind == PreviewKind::Text)
            appendText(kCrLf + QString::fromLatin1(kLoadError));
        else
            PicInfor->printLine(QString::fromLatin1(kLoadError));
    }
}

bool ResourceBrowser::showPicture(const ResourcePreview& preview)
{
    const QImage image = QImage::fromData(preview.bytes);
    if (image.isNull())
        return false;
    PicInfor->setPicture(image);
    PicInfor->printLine(QStringLiteral("ImageType: ") + preview.imageType);
    PicInfor->printLine(QStringLiteral("ImageSize[Width*Height]: ") + QString::number(image.width())
        + QStringLiteral("×") + QString::number(image.height()) + QStringLiteral(" pixels"));
    return true;
}

bool ResourceBrowser::showDialog(const ResourcePreview& preview)
{
    const auto dialog = resources::parseDialogTemplate(preview.bytes);
    if (!dialog)
        return false;
    auto* mockup = new DialogMockup(*dialog, PicInfor);
    mockup->move(0, 0);
    mockup->show();
    m_dialog = mockup;
    return true;
}

bool ResourceBrowser::playVideo(const ResourcePreview& preview)
{
    if (QFile::exists(m_tempPath))
        QFile::remove(m_tempPath);
    QFile file(m_tempPath);
    if (!file.open(QIODevice::WriteOnly) || file.write(preview.bytes) != preview.bytes.size())
        return false;
    file.close();

    auto* video = new QVideoWidget(PicInfor);
    video->setObjectName(QStringLiteral("VideoWidget"));
    video->setGeometry(PicInfor->rect());
    video->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* player = new QMediaPlayer(this);
    // A machine without a sound device still shows the picture.
    if (!QMediaDevices::audioOutputs().isEmpty())
        player->setAudioOutput(new QAudioOutput(player));
    player->setVideoOutput(video);
    player->setLoops(QMediaPlayer::Infinite);
    connect(player, &QMediaPlayer::metaDataChanged, this, [this, player, video] {
        const QSize size = player->metaData().value(QMediaMetaData::Resolution).toSize();
        if (!size.isValid() || size.isEmpty())
            return;
        // Centred in the picture area, the size line below it.
        video->setGeometry((PicInfor->width() - size.width()) / 2, (PicInfor->height() - size.height()) / 2,
            size.width(), size.height());
        PicInfor->printLine(QStringLiteral("VideoSize[Width*Height]: ") + QString::number(size.width())
            + QStringLiteral("×") + QString::number(size.height()) + QStringLiteral(" pixels"));
    });
    player->setSource(QUrl::fromLocalFile(m_tempPath));
    video->show();
    player->play();
    m_player = player;
    m_video = video;
    return true;
}

bool ResourceBrowser::videoPlaying() const
{
    return m_player != nullptr;
}

void ResourceBrowser::closePreview(bool clearPicture)
{
    if (m_player) {
        m_player->stop();
        m_player->setSource(QUrl());
        delete m_player;
    }
    delete m_video;
    if (!m_tempPath.isEmpty() && QFile::exists(m_tempPath))
        QFile::remove(m_tempPath);
    delete m_dialog;
    if (clearPicture)
        PicInfor->clear();
}

QTreeWidgetItem* ResourceBrowser::typeNodeOf(const QString& typeText) const
{
    const QTreeWidgetItem* root = rootNode();
    if (!root)
        return nullptr;
    for (int i = 0; i < root->childCount(); ++i) {
        if (typeOfNode(root->child(i)) == typeText)
            return root->child(i);
    }
    return nullptr;
}

bool ResourceBrowser::writeExport(const QString& fileName, const QByteArray& bytes)
{
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    showError(QStringLiteral("Error!"),
        QLatin1Char('[') + QString::number(int(file.error())) + QStringLiteral("] ") + file.errorString());
    return false;
}

void ResourceBrowser::cmdSave_Click()
{
    const auto plan = exportPlanFor(m_type, m_name);
    if (!plan) {
        showError(QStringLiteral("Error!"), QStringLiteral("No resource selected!"));
        return;
    }
    closePreview(false);
    const QString fileName = askSaveName(QStringLiteral("保存"), qtFilterString(plan->filters));
    if (fileName.isEmpty())
        return;
    switch (exportWriteFor(plan->content, fileName)) {
    case ExportWrite::Nothing:
        return;
    case ExportWrite::TextFile: {
        QString text = m_text;
        if (plan->content == ExportContent::AllStringTables) {
            if (QTreeWidgetItem* node = typeNodeOf(m_type))
                expandType(node);
            text = m_model.allStringTables();
        }
        writeExport(fileName, text.toUtf8());
        return;
    }
    case ExportWrite::IconFile: {
        const ResourcePreview picture = m_model.preview(m_type, m_name);
        const bool iconKind = m_type != QLatin1String("2") && !picture.bytes.isEmpty();
        if (iconKind) {
            writeExport(fileName, picture.bytes); // .ico, or .cur with its hot spot
        } else {
            QByteArray bytes;
            QBuffer buffer(&bytes);
            buffer.open(QIODevice::WriteOnly);
            if (QImage::fromData(picture.bytes).save(&buffer, "ICO"))
                writeExport(fileName, bytes);
        }
        return;
    }
    case ExportWrite::BitmapFile: {
        const ResourcePreview picture = m_model.preview(m_type, m_name);
        if (m_type == QLatin1String("2")) {
            writeExport(fileName, picture.bytes); // the bitmap as it is, with its file header
            return;
        }
        PicInfor->setPicture(QImage::fromData(picture.bytes));
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        if (PicInfor->drawnPicture().save(&buffer, "BMP"))
            writeExport(fileName, bytes);
        return;
    }
    case ExportWrite::RawBytes:
        writeExport(fileName, m_model.resourceData(m_type, m_name));
        return;
    }
}

void ResourceBrowser::cmdOpen_Click()
{
    const QString path
        = askOpenName(QStringLiteral("打开"), QStringLiteral("exe files(*.exe);;dll files(*.dll)"));
    if (path.isEmpty())
        return;
    PicInfor->clear();
    setText(QString());
    files::FileIcons icons;
    picIcon_16B->setPixmap(icons.smallPixmap(path));
    txtShortFileNameB->setText(QFileInfo(path).fileName());
    openModule(path, path);
}

} // namespace vindaro::info::ui

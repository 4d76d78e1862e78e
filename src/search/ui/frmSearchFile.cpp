#include "frmSearchFile.h"

#include "chrome/ToolTips.h"
#include "files/FileTexts.h"
#include "search/FileSearch.h"
#include "search/PatternHistory.h"
#include "search/ProfileFile.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace vindaro::search {

namespace {

const QString kDescription = QStringLiteral("该文件搜索对话框允许你在硬盘、网上邻居上搜索所有你需要的文件，")
    + QStringLiteral("并在Vindaro程序的组合列表框中显示出来，")
    + QStringLiteral("此时你可以根据需要进行添加、")
    + QStringLiteral("清除、复制、移动、删除、重命名文件等操作。");
const QString kBrowseTitle = QStringLiteral("选择文件搜索范围");

QList<chrome::ToolTipEntry> searchWindowToolTips()
{
    return {{QStringLiteral("cmdFileBrower"), QString(), {QStringLiteral("浏览目录以选择文件搜索范围")}},
        {QStringLiteral("cmdFileSearch"), QString(), {QStringLiteral("立即搜索")}},
        {QStringLiteral("cmdFileStopSearch"), QString(), {QStringLiteral("停止搜索")}},
        {QStringLiteral("cmdExit"), QString(), {QStringLiteral("确定退出")}}};
}

// The status line: a long path is shown with its middle left out, and never widens the window.
class PathLabel final : public QLabel
{
public:
    PathLabel()
    {
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
        setMinimumHeight(fontMetrics().height() + 4);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect area = contentsRect();
        painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter,
            fontMetrics().elidedText(text(), Qt::ElideMiddle, area.width()));
    }
};

template<typename Widget> Widget* named(Widget* widget, const char* name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

} // namespace

frmSearchFile::frmSearchFile(platform::Volumes& volumes, platform::Shell& shell, SearchResults& results,
    QWidget* parent, const QString& historyPath)
    : QWidget(parent, Qt::Window)
    , m_fs(std::make_unique<files::FileSystem>(volumes, shell, nullptr))
    , m_volumes(volumes)
    , m_historyPath(historyPath.isEmpty() ? PatternHistory::settingsFilePath() : historyPath)
{
    setObjectName(QStringLiteral("frmSearchFile"));
    // The window's own caption: the picture button that opens it speaks of the "搜索文件" dialog.
    setWindowTitle(QStringLiteral("搜索文件"));
    const bool song = QFontDatabase::hasFamily(QStringLiteral("宋体"));
    QFont face(song ? QStringLiteral("宋体") : QStringLiteral("MS Sans Serif"));
    face.setPointSize(song ? 9 : 8);
    setFont(face);

    m_search = new FileSearch(results, this);
    buildWindow();
    chrome::attachToolTips(this, searchWindowToolTips());
    lblTitle->setText(kDescription);
    fillDriveList();
    LoadPatternHistory();

    connect(m_search, &FileSearch::statusTextChanged, lblFilePath, &QLabel::setText);
    connect(m_search, &FileSearch::searchingChanged, this, [this](bool searching) {
        cmdFileSearch->setEnabled(!searching);
        cmdFileBrower->setEnabled(!searching);
    });
}

frmSearchFile::~frmSearchFile()
{
    SavePatternHistory(); // once: nothing more when closing has stored it already
}

void frmSearchFile::buildWindow()
{
    auto* outer = new QVBoxLayout(this);
    lblTitle = named(new QLabel, "lblTitle");
    lblTitle->setWordWrap(true);
    outer->addWidget(lblTitle);

    auto* grid = new QGridLayout;
    lblTitle1 = named(new QLabel(QStringLiteral("输入要搜索的文件：[例如 *.DAT]")), "lblTitle1");
    cmbFileSearchChoose = named(new QComboBox, "cmbFileSearchChoose");
    cmbFileSearchChoose->setEditable(true);
    cmbFileSearchChoose->setInsertPolicy(QComboBox::NoInsert); // a search adds its pattern itself
    cmbFileSearchChoose->setCompleter(nullptr);
    lblTitle2 = named(new QLabel(QStringLiteral("选择文件搜索范围：")), "lblTitle2");
    cmbFileSearchWide = named(new QComboBox, "cmbFileSearchWide");
    cmbFileSearchWide->setEditable(true);
    cmbFileSearchWide->setInsertPolicy(QComboBox::NoInsert);
    cmbFileSearchWide->setCompleter(nullptr);
    cmdFileBrower = named(new QPushButton(QStringLiteral("浏 览[&B]...")), "cmdFileBrower");
    for (QComboBox* box : {cmbFileSearchChoose, cmbFileSearchWide}) {
        box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
        box->setMinimumContentsLength(28);
    }
    grid->addWidget(lblTitle1, 0, 0, 1, 2);
    grid->addWidget(cmbFileSearchChoose, 1, 0, 1, 2);
    grid->addWidget(lblTitle2, 2, 0, 1, 2);
    grid->addWidget(cmbFileSearchWide, 3, 0);
    grid->addWidget(cmdFileBrower, 3, 1);
    outer->addLayout(grid);

    auto* boxes = new QGridLayout;
    chkSubFolder = named(new QCheckBox(QStringLiteral("包含子文件夹[&S]")), "chkSubFolder");
    chkSearchFileSize_1 = named(new QCheckBox(QStringLiteral("1KB到10M之间[&K]")), "chkSearchFileSize_1");
    chkSearchFileSize_2 = named(new QCheckBox(QStringLiteral("10M-100M之间[&M]")), "chkSearchFileSize_2");
    chkSearchFileSize_3 = named(new QCheckBox(QStringLiteral("1OOM到1G之间[&G]")), "chkSearchFileSize_3");
    chkReadOnlyFile = named(new QCheckBox(QStringLiteral("搜索只读文件[&R]")), "chkReadOnlyFile");
    chkHideFile = named(new QCheckBox(QStringLiteral("搜索隐藏文件[&H]")), "chkHideFile");
    chkArchiveFile = named(new QCheckBox(QStringLiteral("搜索存档文件[&A]")), "chkArchiveFile");
    chkSystemFile = named(new QCheckBox(QStringLiteral("搜索系统文件[&T]")), "chkSystemFile");
    chkCompressFile = named(new QCheckBox(QStringLiteral("搜索压缩文件[&C]")), "chkCompressFile");
    chkSubFolder->setChecked(true);
    // Left column: where and how large; right column: which attributes.
    const QList<QCheckBox*> left{chkSubFolder, chkSearchFileSize_1, chkSearchFileSize_2, chkSearchFileSize_3};
    const QList<QCheckBox*> right{
        chkReadOnlyFile, chkHideFile, chkArchiveFile, chkSystemFile, chkCompressFile};
    for (int i = 0; i < left.size(); ++i)
        boxes->addWidget(left.at(i), i, 0);
    for (int i = 0; i < right.size(); ++i)
        boxes->addWidget(right.at(i), i, 1);
    outer->addLayout(boxes);

    lblFilePath = named(new PathLabel, "lblFilePath");
    lblFilePath->setFrameShape(QFrame::StyledPanel);
    lblFilePath->setFrameShadow(QFrame::Sunken);
    outer->addWidget(lblFilePath);

    auto* buttons = new QHBoxLayout;
    cmdFileSearch = named(new QPushButton(QStringLiteral("立即搜索[&I]")), "cmdFileSearch");
    cmdFileStopSearch = named(new QPushButton(QStringLiteral("停止搜索[&P]")), "cmdFileStopSearch");
    cmdExit = named(new QPushButton(QStringLiteral("确 定[&O]   ")), "cmdExit");
    buttons->addStretch(1);
    for (QPushButton* button : {cmdFileSearch, cmdFileStopSearch, cmdExit}) {
        button->setAutoDefault(false); // Enter in the pattern box searches; nothing else takes it
        buttons->addWidget(button);
    }
    outer->addLayout(buttons);

    connect(cmdFileSearch, &QPushButton::clicked, this, &frmSearchFile::cmdFileSearch_Click);
    connect(cmdFileStopSearch, &QPushButton::clicked, this, &frmSearchFile::cmdFileStopSearch_Click);
    connect(cmdFileBrower, &QPushButton::clicked, this, &frmSearchFile::cmdFileBrower_Click);
    connect(cmdExit, &QPushButton::clicked, this, &frmSearchFile::cmdExit_Click);
    connect(cmbFileSearchChoose->lineEdit(), &QLineEdit::returnPressed, cmdFileSearch, &QPushButton::click);
    for (QCheckBox* box : {chkSearchFileSize_1, chkSearchFileSize_2, chkSearchFileSize_3})
        connect(box, &QCheckBox::pressed, this, [this, box] { sizeBoxPressed(box); });
}

void frmSearchFile::sizeBoxPressed(QCheckBox* pressed)
{
    // At most one size class is in force: pressing one box clears the other two.
    for (QCheckBox* box : {chkSearchFileSize_1, chkSearchFileSize_2, chkSearchFileSize_3}) {
        if (box != pressed)
            box->setChecked(false);
    }
}

void frmSearchFile::fillDriveList()
{
    // Every mounted volume is a "drive": its mount point with a closing "/". Linux paths keep their case,
    // and the list is not cut to a fixed length.
    for (const platform::Volume& volume : m_volumes.list())
        cmbFileSearchWide->addItem(files::withTrailingSlash(volume.mountPoint));
    if (cmbFileSearchWide->count() > 0)
        cmbFileSearchWide->setEditText(cmbFileSearchWide->itemText(0));
}

void frmSearchFile::LoadPatternHistory()
{
    const QStringList patterns = PatternHistory::load(m_historyPath);
    cmbFileSearchChoose->addItems(patterns);
    if (!patterns.isEmpty())
        cmbFileSearchChoose->setEditText(patterns.first());
}

void frmSearchFile::SavePatternHistory()
{
    if (m_historySaved)
        return;
    m_historySaved = true;
    PatternHistory::save(m_historyPath, patternList()); // a failed write is not reported
}

QStringList frmSearchFile::patternList() const
{
    QStringList patterns;
    for (int i = 0; i < cmbFileSearchChoose->count(); ++i)
        patterns.append(cmbFileSearchChoose->itemText(i));
    return patterns;
}

SearchOptions frmSearchFile::searchOptions() const
{
    SearchOptions options;
    options.includeSubfolders = chkSubFolder->isChecked();
    options.size1 = chkSearchFileSize_1->isChecked();
    options.size2 = chkSearchFileSize_2->isChecked();
    options.size3 = chkSearchFileSize_3->isChecked();
    options.readOnly = chkReadOnlyFile->isChecked();
    options.hidden = chkHideFile->isChecked();
    options.archive = chkArchiveFile->isChecked();
    options.system = chkSystemFile->isChecked();
    options.compressed = chkCompressFile->isChecked();
    return options;
}

void frmSearchFile::cmdFileSearch_Click()
{
    const QString pattern = cmbFileSearchChoose->currentText();
    if (m_search->StartSearch(cmbFileSearchWide->currentText(), pattern, searchOptions()))
        cmbFileSearchChoose->addItem(pattern); // duplicates go when the history is stored
}

void frmSearchFile::cmdFileStopSearch_Click()
{
    m_search->requestStop();
}

void frmSearchFile::cmdFileBrower_Click()
{
    const QString folder = m_fs->GetBrowseDirectoryWin9X(this, kBrowseTitle);
    if (!folder.isEmpty())
        cmbFileSearchWide->setEditText(folder);
}

void frmSearchFile::cmdExit_Click()
{
    close();
}

void frmSearchFile::closeEvent(QCloseEvent* event)
{
    if (m_search->isSearching()) {
        event->ignore();
        return;
    }
    SavePatternHistory();
    event->accept();
}

QString frmSearchFile::ReadINIfile(
    const QString& path, const QString& section, const QString& key, const QString& defaultValue)
{
    return ProfileFile::readString(path, section, key, defaultValue);
}

bool frmSearchFile::WriteINIfile(
    const QString& path, const QString& section, const QString& key, const QString& value)
{
    return ProfileFile::writeString(path, section, key, value);
}

} // namespace vindaro::search

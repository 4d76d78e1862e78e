#include "chrome/ToolTips.h"

#include <QApplication>
#include <QHelpEvent>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using vindaro::chrome::attachToolTips;
using vindaro::chrome::BalloonTip;
using vindaro::chrome::mainWindowToolTips;
using vindaro::chrome::ToolTipEntry;
using vindaro::chrome::ToolTips;

namespace {

void askForTip(QWidget* control)
{
    const QPoint local(4, 4);
    QHelpEvent event(QEvent::ToolTip, local, control->mapToGlobal(local));
    QApplication::sendEvent(control, &event);
}

// A window with one control for each tip, nested as the main window nests them.
struct TipWindow
{
    QWidget window;

    explicit TipWindow(const QStringList& skip = {})
    {
        auto* layout = new QVBoxLayout(&window);
        auto* panel = new QWidget;
        auto* inner = new QVBoxLayout(panel);
        layout->addWidget(panel);
        const QList<ToolTipEntry> table = mainWindowToolTips();
        for (const ToolTipEntry& entry : table) {
            if (skip.contains(entry.control))
                continue;
            auto* control = new QPushButton(entry.control);
            control->setObjectName(entry.control);
            inner->addWidget(control);
        }
        window.move(50, 50);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
};

TEST(ToolTips, EveryControlShowsItsTitleAndLines)
{
    TipWindow w;
    EXPECT_TRUE(attachToolTips(&w.window).isEmpty());
    const QList<ToolTipEntry> table = mainWindowToolTips();
    for (const ToolTipEntry& entry : table) {
        auto* control = w.window.findChild<QWidget*>(entry.control);
        ASSERT_NE(control, nullptr);
        ToolTips* tips = ToolTips::of(control);
        ASSERT_NE(tips, nullptr) << qPrintable(entry.control);

        askForTip(control);
        BalloonTip* balloon = tips->balloon();
        ASSERT_NE(balloon, nullptr);
        EXPECT_TRUE(balloon->isVisible()) << qPrintable(entry.control);
        EXPECT_EQ(balloon->title(), entry.title);
        EXPECT_EQ(balloon->lines(), entry.lines);
        EXPECT_GE(balloon->height(), static_cast<int>(entry.lines.size()) * control->fontMetrics().height());
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(control, &leave);
        EXPECT_FALSE(balloon->isVisible()) << qPrintable(entry.control);
    }
}

// A control that is missing is reported and the rest still get theirs; attaching twice keeps one tip.
TEST(ToolTips, ReportsControlsItCannotFindAndAttachesTheRestOnce)
{
    TipWindow w({QStringLiteral("optOpenCD"), QStringLiteral("sldSkipBlocks")});
    EXPECT_EQ(attachToolTips(&w.window),
        (QStringList{QStringLiteral("optOpenCD"), QStringLiteral("sldSkipBlocks")}));
    attachToolTips(&w.window);
    auto* close = w.window.findChild<QWidget*>(QStringLiteral("optCloseCD"));
    EXPECT_NE(ToolTips::of(close), nullptr);
    EXPECT_EQ(close->findChildren<ToolTips*>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
}

TEST(ToolTips, TitleAndTextChangesReachAnExistingBalloon)
{
    QPushButton button(QStringLiteral("x"));
    button.show();
    ToolTips tips(&button);
    EXPECT_FALSE(tips.CreateToolTipsWindow()); // no owner yet
    tips.OwnerhWnd(&button);
    tips.ToolTipsText(QStringLiteral("first"));
    ASSERT_TRUE(tips.CreateToolTipsWindow());
    tips.ToolTipsTitle(QStringLiteral("Title"));
    tips.ToolTipsText(QStringLiteral("one\r\ntwo"));
    EXPECT_EQ(tips.balloon()->title(), QStringLiteral("Title"));
    EXPECT_EQ(tips.balloon()->lines(), (QStringList{QStringLiteral("one"), QStringLiteral("two")}));
}

TEST(BalloonTip, StandsAboveTheMouseNearTheScreensFoot)
{
    QWidget owner;
    BalloonTip balloon(&owner);
    balloon.setContent(QStringLiteral("T"), QStringLiteral("a\nb\nc"));
    const QRect screen = QApplication::primaryScreen()->availableGeometry();
    balloon.showAt(screen.center());
    EXPECT_TRUE(balloon.pointsUp());
    EXPECT_GT(balloon.geometry().top(), screen.center().y());
    balloon.showAt(QPoint(screen.center().x(), screen.bottom() - 5));
    EXPECT_FALSE(balloon.pointsUp());
    EXPECT_LT(balloon.geometry().bottom(), screen.bottom() - 5);
}

} // namespace

#pragma once

#include "chrome/ToolTipTable.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QWidget>

namespace vindaro::chrome {

// A balloon: a rounded box with a pointer, a bold title line (when there is a title) and the text lines.
class BalloonTip : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kShowMs = 10000; // hides itself after this long

    explicit BalloonTip(QWidget* owner);

    void setContent(const QString& title, const QString& text);
    QString title() const { return m_title; }
    QStringList lines() const { return m_lines; }

    // Shows the balloon pointing at the mouse position target (global): hanging below the mouse pointer
    // when there is room on the screen, else standing above it.
    void showAt(const QPoint& target);
    bool pointsUp() const { return m_pointsUp; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    QRect bodyRect() const;
    QPainterPath outline() const;

    QString m_title;
    QStringList m_lines;
    bool m_pointsUp = true; // pointer on the top edge (the balloon hangs below the target)
    QTimer m_hideTimer;
};

// The balloon tip of one control: its owner, a title (empty for none) and a text whose lines are
// separated by CR LF or LF. Set owner, title and text, then CreateToolTipsWindow(); the balloon then
// shows whenever the owner asks for its tooltip and hides when the mouse leaves or presses.
// Lives as a child of its owner.
class ToolTips : public QObject
{
    Q_OBJECT

public:
    explicit ToolTips(QObject* parent = nullptr);

    void OwnerhWnd(QWidget* owner);
    void ToolTipsTitle(const QString& title);
    void ToolTipsText(const QString& text);
    // False when there is no owner. A second call only refreshes the balloon's content.
    bool CreateToolTipsWindow();

    QWidget* owner() const { return m_owner; }
    QString title() const { return m_title; }
    QString text() const { return m_text; }
    BalloonTip* balloon() const { return m_balloon; } // null until CreateToolTipsWindow()

    // The ToolTips attached to control, or null.
    static ToolTips* of(const QWidget* control);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QPointer<QWidget> m_owner;
    QString m_title;
    QString m_text;
    QPointer<BalloonTip> m_balloon;
};

// Gives every control of table found in window (by objectName) its balloon tip. Returns the names of
// the controls that were not found.
QStringList attachToolTips(QWidget* window, const QList<ToolTipEntry>& table = mainWindowToolTips());

} // namespace vindaro::chrome

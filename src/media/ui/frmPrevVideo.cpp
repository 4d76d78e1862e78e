#include "frmPrevVideo.h"

#include "MediaArtwork.h"
#include "MediaWindowParts.h"
#include "QtMediaBackend.h"
#include "VideoArea.h"
#include "media/MediaLayout.h"
#include "media/MediaSession.h"
#include "media/MediaTexts.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleOption>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>

#include <functional>

namespace vindaro::media {

// picProgressBar with its knob picSlider. The timer moves the knob; the user drags it with the left button
// held, and the position it stands for is chosen when it is let go (each seek of a damaged stream restarts
// its decoding, so not one per pixel of the drag).
class PreviewBar : public QWidget
{
public:
    static constexpr int kKnobWidth = 16;

    explicit PreviewBar(QWidget* parent)
        : QWidget(parent)
        , m_knob(new QWidget(this))
    {
        setObjectName(QStringLiteral("picProgressBar"));
        setFixedHeight(14);
        m_knob->setObjectName(QStringLiteral("picSlider"));
        m_knob->setAttribute(Qt::WA_TransparentForMouseEvents);
        placeKnob();
    }

    std::function<void(double)> onChosen;

    void setProgress(double positionSeconds, double durationSeconds)
    {
        m_position = positionSeconds;
        m_duration = durationSeconds;
        if (!m_dragging)
            placeKnob();
    }
    QWidget* knob() const { return m_knob; }
    bool dragging() const { return m_dragging; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        QStyleOptionFrame groove;
        groove.initFrom(this);
        groove.rect = rect().adjusted(0, 3, 0, -3);
        groove.lineWidth = 1;
        groove.state |= QStyle::State_Sunken;
        painter.fillRect(groove.rect, palette().color(QPalette::Base));
        style()->drawPrimitive(QStyle::PE_Frame, &groove, &painter, this);
        QStyleOptionButton knob;
        knob.initFrom(this);
        knob.rect = m_knob->geometry();
        knob.state |= QStyle::State_Raised;
        style()->drawPrimitive(QStyle::PE_PanelButtonBevel, &knob, &painter, this);
    }
    void resizeEvent(QResizeEvent*) override { placeKnob(); }
    void mousePressEvent(QMouseEvent* event) override
    {
        const int x = event->position().toPoint().x();
        if (event->button() != Qt::LeftButton || !m_knob->geometry().contains(x, m_knob->y()))
            return;
        m_dragging = true;
        m_grabOffset = x - m_knob->x();
    }
    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (!m_dragging)
            return;
        moveKnob(clampKnobLeft(event->position().toPoint().x() - m_grabOffset, width(), kKnobWidth));
    }
    void mouseReleaseEvent(QMouseEvent* event) override
    {
        if (!m_dragging || event->button() != Qt::LeftButton)
            return;
        m_dragging = false;
        m_position = positionAtKnob(m_knob->x(), width(), kKnobWidth, m_duration);
        if (onChosen)
            onChosen(m_position);
    }

private:
    void placeKnob() { moveKnob(knobLeft(m_position, m_duration, width(), kKnobWidth)); }
    void moveKnob(int left)
    {
        m_knob->setGeometry(left, 0, kKnobWidth, height());
        update();
    }

    QWidget* m_knob;
    double m_position = 0;
    double m_duration = 0;
    bool m_dragging = false;
    int m_grabOffset = 0;
};

frmPrevVideo::frmPrevVideo(files::FileSystem& fileSystem, QWidget* parent, MediaBackend* backend)
    : QWidget(parent, Qt::Window)
    , m_fs(fileSystem)
    , m_backend(backend ? backend : new QtMediaBackend)
{
    setObjectName(QStringLiteral("frmPrevVideo"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Vindaro"));
    setFont(mediaWindowFont(font()));
    m_backend->setParent(this);
    m_session = new MediaSession(*m_backend, this);
    m_image1 = animationFrames();
    setWindowIcon(m_image1.first());

    // The video area takes what the window gives it; the strip and the bar follow its width.
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(4, 4, 4, 4);
    column->setSpacing(2);
    m_picVideoWindow = new VideoArea(this);
    m_picVideoWindow->setObjectName(QStringLiteral("picVideoWindow"));
    m_picVideoWindow->setMinimumSize(160, 120);
    m_lblMP3info = new QLabel(m_picVideoWindow);
    m_lblMP3info->setObjectName(QStringLiteral("lblMP3info"));
    m_lblMP3info->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_lblMP3info->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* inner = new QVBoxLayout(m_picVideoWindow);
    inner->setContentsMargins(4, 4, 4, 4);
    inner->addWidget(m_lblMP3info);
    m_picVideoTipInfo = new TipStrip(this);
    m_picProgressBar = new PreviewBar(this);
    column->addWidget(m_picVideoWindow, 1);
    column->addWidget(m_picVideoTipInfo);
    column->addWidget(m_picProgressBar);
    resize(380, 360);

    m_tmrTime = makeTickTimer(this, *m_session);
    connect(m_tmrTime, &QTimer::timeout, this, &frmPrevVideo::onTick);
    connect(m_session, &MediaSession::stateChanged, this, [this](MediaState state) {
        if (state == MediaState::Playing)
            m_picVideoWindow->setPictureShown(true);
        else if (state == MediaState::Empty)
            m_picVideoWindow->clearPicture(); // the facts show again
    });
    connect(m_session, &MediaSession::totalsChanged, this, [this] {
        m_picProgressBar->setProgress(m_session->positionSeconds(), m_session->durationSeconds());
    });
    connect(m_session, &MediaSession::positionChanged, this,
        [this](double seconds) { m_picProgressBar->setProgress(seconds, m_session->durationSeconds()); });
    connect(m_session, &MediaSession::endReached, this,
        [this] { m_picProgressBar->setProgress(0, m_session->durationSeconds()); });
    connect(m_session, &MediaSession::pictureMissing, m_picVideoWindow, &VideoArea::clearPicture);
    connect(
        m_picVideoWindow, &VideoArea::pictureVisibilityChanged, this, &frmPrevVideo::updateFactsVisibility);
    if (auto* qt = qobject_cast<QtMediaBackend*>(m_backend))
        connect(qt, &QtMediaBackend::frameReady, m_picVideoWindow, &VideoArea::showFrame);
    m_picProgressBar->onChosen = [this](double seconds) { m_session->choosePosition(seconds); };
}

frmPrevVideo::~frmPrevVideo() = default;

void frmPrevVideo::OpenMediaFile(const QString& path)
{
    m_picVideoWindow->clearPicture();
    m_picVideoWindow->setPictureShown(false);
    m_lblMP3info->setText(previewFactsText(path, readFileFacts(m_fs, path)));
    m_picVideoTipInfo->setText(QString());
    m_picProgressBar->setProgress(0, 0);
    setWindowTitle(QFileInfo(path).fileName());
    m_session->open(path);
}

void frmPrevVideo::StartPlay()
{
    m_session->StartPlay();
}

void frmPrevVideo::PausePlay()
{
    m_session->PausePlay();
}

void frmPrevVideo::StopPlay()
{
    m_session->StopPlay();
}

void frmPrevVideo::closeEvent(QCloseEvent* event)
{
    m_session->StopPlay();
    event->accept();
}

void frmPrevVideo::onTick()
{
    m_session->tick();
    m_picVideoTipInfo->setText(
        positionStripText(m_session->positionSeconds(), m_session->durationSeconds(), QTime::currentTime()));
    setWindowIcon(m_image1.value(m_frame));
    m_frame = nextAnimationFrame(m_frame);
}

void frmPrevVideo::updateFactsVisibility()
{
    m_lblMP3info->setVisible(!m_picVideoWindow->showsPicture());
}

} // namespace vindaro::media

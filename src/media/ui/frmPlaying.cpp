#include "frmPlaying.h"

#include "MediaWindowParts.h"
#include "QtMediaBackend.h"
#include "VideoArea.h"
#include "media/MediaSession.h"
#include "media/MediaTexts.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QLabel>
#include <QSlider>
#include <QTimer>

#include <cmath>

namespace vindaro::media {

namespace {

template<typename Widget> Widget* placed(Widget* widget, const char* name, const QRect& geometry)
{
    widget->setObjectName(QString::fromLatin1(name));
    widget->setGeometry(geometry);
    return widget;
}

int wholeSeconds(double seconds)
{
    return seconds > 0 ? static_cast<int>(qMin(std::floor(seconds), 2147483647.0)) : 0;
}

} // namespace

frmPlaying::frmPlaying(files::FileSystem& fileSystem, QWidget* parent, MediaBackend* backend)
    : QWidget(parent, Qt::Window)
    , m_fs(fileSystem)
    , m_backend(backend ? backend : new QtMediaBackend)
{
    setObjectName(QStringLiteral("frmPlaying"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Vindaro"));
    setFont(mediaWindowFont(font()));
    m_backend->setParent(this);
    m_session = new MediaSession(*m_backend, this);

    // A fixed layout: a video area of a VCD picture's size, the slider, then the button and four labels.
    setFixedSize(372, 350);
    m_picVideo = placed(new VideoArea(this), "picVideo", QRect(6, 6, 360, 292));
    m_sldProgress = placed(new QSlider(Qt::Horizontal, this), "sldProgress", QRect(6, 302, 360, 20));
    m_sldProgress->setRange(0, 0);
    m_picMediaControlButton = placed(new ControlButton(this), "picMediaControlButton", QRect(6, 326, 44, 20));
    m_lblCurrentTime = placed(new QLabel(this), "lblCurrentTime", QRect(56, 326, 64, 20));
    m_lblTotalTime = placed(new QLabel(this), "lblTotalTime", QRect(122, 326, 64, 20));
    m_lblCurrentPosition = placed(new QLabel(this), "lblCurrentPosition", QRect(188, 326, 68, 20));
    m_lblTotalLength = placed(new QLabel(this), "lblTotalLength", QRect(258, 326, 108, 20));
    m_tmrTime = makeTickTimer(this, *m_session);

    m_picMediaControlButton->onPress = [this](ControlHalf half) {
        switch (controlPress(m_picMediaControlButton->look(), half)) {
        case ControlAction::Start:
            StartPlay();
            break;
        case ControlAction::Pause:
            PausePlay();
            break;
        case ControlAction::None:
            break;
        }
    };
    connect(m_tmrTime, &QTimer::timeout, m_session, &MediaSession::tick);
    connect(m_session, &MediaSession::stateChanged, this, [this](MediaState state) {
        if (state == MediaState::Playing)
            m_picVideo->setPictureShown(true);
        else if (state == MediaState::Empty)
            m_picVideo->clearPicture(); // the facts show again
        updateButton();
    });
    connect(m_session, &MediaSession::totalsChanged, this, &frmPlaying::showTotals);
    connect(m_session, &MediaSession::positionChanged, this, &frmPlaying::showPosition);
    connect(m_session, &MediaSession::endReached, this, [this] { m_sldProgress->setValue(0); });
    connect(m_session, &MediaSession::pictureMissing, m_picVideo, &VideoArea::clearPicture);
    if (auto* qt = qobject_cast<QtMediaBackend*>(m_backend))
        connect(qt, &QtMediaBackend::frameReady, m_picVideo, &VideoArea::showFrame);

    // Only the user's moves seek: the timer's own updates of the value do not.
    connect(m_sldProgress, &QAbstractSlider::sliderReleased, this, &frmPlaying::sliderChosen);
    connect(
        m_sldProgress, &QAbstractSlider::actionTriggered, this,
        [this](int action) {
            if (action != QAbstractSlider::SliderMove)
                sliderChosen();
        },
        Qt::QueuedConnection); // the value changes after the signal
    updateButton();
}

frmPlaying::~frmPlaying() = default;

void frmPlaying::OpenMediaFile(const QString& path)
{
    for (QLabel* label : {m_lblTotalTime, m_lblTotalLength, m_lblCurrentTime, m_lblCurrentPosition})
        label->clear();
    m_sldProgress->setValue(0);
    m_sldProgress->setMaximum(0);
    m_picVideo->clearPicture();
    m_picVideo->setPictureShown(false);
    m_picVideo->setLines(playerFactsLines(readFileFacts(m_fs, path)));
    setWindowTitle(QFileInfo(path).fileName());
    m_session->open(path);
    updateButton();
}

void frmPlaying::StartPlay()
{
    m_session->StartPlay();
}

void frmPlaying::PausePlay()
{
    m_session->PausePlay();
}

void frmPlaying::StopPlay()
{
    m_session->StopPlay();
}

void frmPlaying::closeEvent(QCloseEvent* event)
{
    m_session->StopPlay();
    event->accept();
}

void frmPlaying::showTotals()
{
    if (m_session->state() == MediaState::Empty || m_session->state() == MediaState::Opening)
        return;
    const double duration = m_session->durationSeconds();
    m_sldProgress->setMaximum(wholeSeconds(duration));
    m_lblTotalTime->setText(timeText(duration));
    m_lblTotalLength->setText(m_session->kind() == MediaKind::Video
            ? videoLengthText(duration, m_session->pictureSize())
            : secondsText(duration));
}

void frmPlaying::showPosition(double seconds)
{
    m_lblCurrentTime->setText(timeText(seconds));
    if (!m_sldProgress->isSliderDown())
        m_sldProgress->setValue(wholeSeconds(seconds));
    m_lblCurrentPosition->setText(secondsText(seconds));
}

void frmPlaying::updateButton()
{
    m_picMediaControlButton->setLook(controlLook(m_session->isOpen(), m_session->isPlaying()));
}

void frmPlaying::sliderChosen()
{
    m_session->choosePosition(m_sldProgress->value());
}

} // namespace vindaro::media

#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QString>
#include <QTimer>

#include <functional>
#include <ostream>

// Readable failure messages for texts.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace vindaro::testing {

// Runs the event loop until condition holds or timeoutMs has passed; returns the condition's last value.
inline bool waitFor(const std::function<bool()>& condition, int timeoutMs = 5000)
{
    const QDeadlineTimer deadline(timeoutMs);
    QEventLoop loop;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, &loop, [&] {
        if (condition() || deadline.hasExpired())
            loop.quit();
    });
    tick.start(5);
    if (!condition())
        loop.exec();
    return condition();
}

} // namespace vindaro::testing

#pragma once

#include "oplog/ChangeMonitor.h"

namespace vindaro::testing {

// A change monitor the test drives: deliver() hands changes to the sink as a monitor's thread would.
class FakeChangeMonitor final : public oplog::ChangeMonitor
{
public:
    bool available = true; // false: start() fails, as without inotify
    int starts = 0;
    int stops = 0;

    bool start(oplog::ChangeSink& sink) override
    {
        ++starts;
        if (!available)
            return false;
        m_sink = &sink;
        return true;
    }
    void stop() override
    {
        ++stops;
        m_sink = nullptr;
    }
    bool running() const { return m_sink != nullptr; }
    void deliver(QList<oplog::ChangeEvent> changes)
    {
        if (m_sink)
            m_sink->addChanges(std::move(changes));
    }

private:
    oplog::ChangeSink* m_sink = nullptr;
};

} // namespace vindaro::testing

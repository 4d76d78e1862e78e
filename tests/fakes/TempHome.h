#pragma once

#include <QTemporaryDir>

namespace vindaro::testing {

// Points HOME and every XDG_* folder at a fresh temporary tree for the life of the process, so no test
// reads or writes the real user's files, trash or settings.
class TempHome
{
public:
    TempHome();
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};

} // namespace vindaro::testing

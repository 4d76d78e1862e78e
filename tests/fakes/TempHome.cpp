#include "TempHome.h"

#include <QDir>

namespace vindaro::testing {

TempHome::TempHome()
{
    Q_ASSERT(m_dir.isValid());
    const QString root = m_dir.path();
    const struct
    {
        const char* name;
        const char* sub;
    } folders[] = {
        {"HOME", ""},
        {"XDG_DATA_HOME", ".local/share"},
        {"XDG_CONFIG_HOME", ".config"},
        {"XDG_STATE_HOME", ".local/state"},
        {"XDG_CACHE_HOME", ".cache"},
        {"XDG_RUNTIME_DIR", "run"},
    };
    for (const auto& f : folders) {
        const QString path = QDir(root).filePath(QString::fromLatin1(f.sub));
        QDir().mkpath(path);
        if (qstrcmp(f.name, "XDG_RUNTIME_DIR") == 0)
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(f.name, QFile::encodeName(path));
    }
}

} // namespace vindaro::testing

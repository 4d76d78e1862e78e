#pragma once

// A golden file of texts, for the tests that check every text of a subsystem once.

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

namespace vindaro::testing {

// Texts checked against a golden file, one "name: text" line each with CR and LF shown as \r and \n.
// VINDARO_UPDATE_GOLDEN=1 writes the file anew: review its diff.
class GoldenText
{
public:
    void add(const QString& name, QString text)
    {
        text.replace(QLatin1Char('\r'), QStringLiteral("\\r"))
            .replace(QLatin1Char('\n'), QStringLiteral("\\n"));
        m_lines << name + QStringLiteral(": ") + text;
    }
    void check(const QString& path) const
    {
        QFile file(path);
        if (qEnvironmentVariableIsSet("VINDARO_UPDATE_GOLDEN")) {
            ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write((m_lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
            file.close();
        }
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        const QStringList expected
            = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (qsizetype i = 0; i < std::max(m_lines.size(), expected.size()); ++i)
            EXPECT_EQ(m_lines.value(i), expected.value(i)) << "line " << i + 1;
    }

private:
    QStringList m_lines;
};

} // namespace vindaro::testing

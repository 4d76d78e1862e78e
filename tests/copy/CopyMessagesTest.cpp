// Every text of the copy engine, checked once against a golden file: other tests check facts, not wording.
// After a deliberate change of a text, run with VINDARO_UPDATE_GOLDEN=1 to write the file anew and review
// its diff.
#include "copy/CopyMessages.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace vindaro::copy;
namespace platform = vindaro::platform;

namespace {

const QString kSource = QStringLiteral("/media/cdrom/MPEGAV/AVSEQ01.DAT");
const QString kDest = QStringLiteral("/home/u/video/a.dat");

QString escaped(QString text)
{
    return text.replace(QStringLiteral("\r"), QStringLiteral("\\r"))
        .replace(QStringLiteral("\n"), QStringLiteral("\\n"));
}

QString boxLine(const platform::MessageBox& box)
{
    const char* icon = box.icon == platform::BoxIcon::Critical ? "critical"
        : box.icon == platform::BoxIcon::Information           ? "information"
                                                               : "exclamation";
    return QStringLiteral("[%1|%2|%3] ")
               .arg(box.title, QString::fromLatin1(icon),
                   box.buttons == platform::BoxButtons::YesNo ? QStringLiteral("yes/no")
                                                              : QStringLiteral("ok"))
        + escaped(box.text);
}

QStringList allMessages()
{
    QStringList lines;
    const auto add = [&](const char* name, const QString& text) {
        lines << QString::fromLatin1(name) + QStringLiteral(": ") + text;
    };
    const auto addBox = [&](const char* name, const platform::MessageBox& box) { add(name, boxLine(box)); };
    const struct
    {
        const char* name;
        Failure failure;
    } failures[] = {
        {"DiskFull", Failure::DiskFull},
        {"BadRecord", Failure::BadRecord},
        {"SharingConflict", Failure::SharingConflict},
        {"UnreadableStart", Failure::UnreadableStart},
        {"NoMedium", Failure::NoMedium},
        {"Unknown", Failure::Unknown},
    };
    for (const auto& f : failures) {
        for (const bool merge : {false, true}) {
            const msg::FailureTexts texts = msg::singleFailure(f.failure, merge, kSource);
            const QByteArray name = QByteArray("single ") + f.name + (merge ? " merge" : "");
            add((name + " cause").constData(), escaped(texts.cause));
            add((name + " box").constData(), escaped(texts.box));
        }
        add((QByteArray("batch cause ") + f.name).constData(), escaped(msg::batchFailureCause(f.failure)));
    }
    add("described", msg::describedFailure(5, QStringLiteral("Input/output error")));
    for (const bool merge : {false, true}) {
        const char* tag = merge ? " merge" : "";
        add((QByteArray("error title") + tag).constData(), msg::errorBoxTitle(merge));
        add((QByteArray("error entry") + tag).constData(),
            escaped(msg::errorEntry(kSource, kDest, merge, QStringLiteral("CAUSE"))));
        add((QByteArray("finished entry") + tag).constData(),
            escaped(msg::finishedEntry(kSource, kDest, 1234567890, merge, QStringLiteral("00:01:02"),
                QStringLiteral("2,048KB/秒"))));
        addBox((QByteArray("finished notice") + tag).constData(), msg::finishedNotice(kSource, kDest, merge));
        addBox((QByteArray("retry question") + tag).constData(), msg::retryQuestion(merge));
        add((QByteArray("cancelled entry") + tag).constData(), msg::cancelledEntry(kSource, merge));
    }
    add("skipped entry", msg::skippedEntry(1234567));
    addBox("delete partial", msg::deletePartialQuestion(kDest));
    addBox("empty paths", msg::emptyPathsNotice());
    addBox("invalid destination", msg::invalidDestinationNotice());
    addBox("same file", msg::sameFileNotice());
    add("low space entry",
        escaped(
            msg::lowSpaceEntry(kSource, QStringLiteral("/home"), 500.0 * 1024 * 1024, 700LL * 1024 * 1024)));
    addBox("low space",
        msg::lowSpaceQuestion(QStringLiteral("/home"), 500.0 * 1024 * 1024, 700LL * 1024 * 1024));
    addBox("low space on resume",
        msg::lowSpaceOnResumeQuestion(QStringLiteral("/home"), -1, 700LL * 1024 * 1024));
    add("continued entry", escaped(msg::continuedEntry(kSource, kDest)));
    addBox("overwrite or append", msg::overwriteOrAppendQuestion(kDest));
    addBox("too many files", msg::tooManyFilesNotice());
    addBox("batch low space",
        msg::batchLowSpaceQuestion(QStringLiteral("/home"), 500.0 * 1024 * 1024, 5LL << 30));
    addBox("batch sync failure",
        msg::batchSyncFailure(QStringLiteral("/home/u/out/"), 5, QStringLiteral("Input/output error")));
    for (const qint64 total :
        {qint64(10239), qint64(10240), qint64(1023999), qint64(1024000), qint64(5) << 30})
        add("batch total", msg::batchTotal(total));
    add("batch from", msg::batchFromText(kSource));
    add("batch to", msg::batchToText(kDest));
    add("batch count", msg::batchCountText(3, 12));
    return lines;
}

TEST(CopyMessages, EveryTextIsTheGoldenOne)
{
    const QString golden = QStringLiteral(VINDARO_GOLDEN_DIR "/copy_messages.txt");
    const QStringList lines = allMessages();
    if (qEnvironmentVariableIsSet("VINDARO_UPDATE_GOLDEN")) {
        QFile out(golden);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write((lines.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
    }
    QFile in(golden);
    ASSERT_TRUE(in.open(QIODevice::ReadOnly)) << golden.toStdString();
    const QStringList expected = QString::fromUtf8(in.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), expected.size());
    for (qsizetype i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i], expected[i]) << "line " << i + 1;
}

} // namespace

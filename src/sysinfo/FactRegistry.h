#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>

// The system facts of the about window, kept in the layout of a registry: keys (paths of names joined by
// backslashes) under a root, each with named values. The readers below work on it alone; Linux's own
// sources fill it (LinuxFacts.h), tests fill it by hand.
namespace vindaro::sysinfo {

enum class RootKey
{
    LocalMachine,
    CurrentUser
};

// A value's type decides how it reads as text. The numbers are the registry's type codes.
enum class ValueType
{
    String = 1,
    Binary = 3,
    Number = 4, // 32-bit
    MultiString = 7
};

struct FactValue
{
    ValueType type = ValueType::String;
    // String: the text (an embedded NUL ends it); MultiString: each string followed by a NUL;
    // Binary: the bytes as Latin-1 characters.
    QString text;
    quint32 number = 0; // Number only

    static FactValue string(const QString& text) { return {ValueType::String, text, 0}; }
    static FactValue multiString(const QStringList& strings);
    static FactValue numberValue(quint32 number) { return {ValueType::Number, QString(), number}; }
};

// Key paths and value names compare without regard to case, as the registry's do.
class FactRegistry
{
public:
    void setValue(RootKey root, const QString& keyPath, const QString& name, const FactValue& value);
    // nullopt when the key or the value is missing.
    std::optional<FactValue> value(RootKey root, const QString& keyPath, const QString& name) const;
    bool isEmpty() const { return m_keys.isEmpty(); }

private:
    static QString keyId(RootKey root, const QString& keyPath);

    QHash<QString, QHash<QString, FactValue>> m_keys; // keyId -> lower-case value name -> value
};

// Where the facts sit.
inline const QString kNtSystemKey = QStringLiteral("SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
inline const QString k9xSystemKey = QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion");
inline const QString kSystemDescriptionKey = QStringLiteral("HARDWARE\\Description\\System");
inline const QString kProcessorKey = QStringLiteral("HARDWARE\\Description\\System\\CentralProcessor\\0");

// One value as text: a string's text up to its first NUL, a multi-string's first string, a 32-bit number
// in upper-case hexadecimal digits without leading zeros (1800 -> "708", 0 -> "0"); "" for a missing key
// or value and for any other type.
QString ReadRemoteReg(
    const FactRegistry& registry, RootKey root, const QString& keyPath, const QString& valueName);

// The value of a text of hexadecimal digits ("708" -> 1800; either case). 0 for an empty text, for a
// character that is no hexadecimal digit and for more than 16 digits.
quint64 HexToNumber(const QString& hex);

// The version code of a version text: the number written with two decimals ("5.1" -> "5.10"), then its
// first character and its last two ("510"). Only the leading number counts, so a text with a build
// appended ("4.10.1998") reads as its first two parts ("410"); a text that does not start with a number
// gives its own first and last two characters; "" stays "".
QString versionCode(const QString& versionText);

// The system family: "NT" for the codes 510 and 500, "9x" for 490, 422 and 410, "9x/NT" for 400, any
// other code unchanged. Read from "VersionNumber" of the 9x system key, else "CurrentVersion" of the NT
// system key, both under the local machine.
QString GetWinVersion(const FactRegistry& registry);

} // namespace vindaro::sysinfo

#include "FactRegistry.h"

#include <QRegularExpression>

namespace vindaro::sysinfo {

FactValue FactValue::multiString(const QStringList& strings)
{
    QString text;
    for (const QString& s : strings)
        text += s + QChar(u'\0');
    return {ValueType::MultiString, text, 0};
}

QString FactRegistry::keyId(RootKey root, const QString& keyPath)
{
    return QString::number(static_cast<int>(root)) + u'|' + keyPath.toLower();
}

void FactRegistry::setValue(RootKey root, const QString& keyPath, const QString& name, const FactValue& value)
{
    m_keys[keyId(root, keyPath)].insert(name.toLower(), value);
}

std::optional<FactValue> FactRegistry::value(RootKey root, const QString& keyPath, const QString& name) const
{
    const auto key = m_keys.constFind(keyId(root, keyPath));
    if (key == m_keys.constEnd())
        return std::nullopt;
    const auto found = key->constFind(name.toLower());
    if (found == key->constEnd())
        return std::nullopt;
    return *found;
}

// No buffer limit as a fixed-size query would have: a long value reads whole.
QString ReadRemoteReg(
    const FactRegistry& registry, RootKey root, const QString& keyPath, const QString& valueName)
{
    const std::optional<FactValue> value = registry.value(root, keyPath, valueName);
    if (!value)
        return {};
    switch (value->type) {
    case ValueType::String:
    case ValueType::MultiString: {
        const qsizetype nul = value->text.indexOf(QChar(u'\0'));
        return nul < 0 ? value->text : value->text.left(nul);
    }
    case ValueType::Number:
        return QString::number(value->number, 16).toUpper();
    case ValueType::Binary:
        break;
    }
    return {};
}

quint64 HexToNumber(const QString& hex)
{
    if (hex.size() > 16)
        return 0;
    quint64 number = 0;
    for (const QChar c : hex) {
        const qsizetype digit = QStringLiteral("0123456789ABCDEF").indexOf(c.toUpper());
        if (digit < 0)
            return 0;
        number = number * 16 + static_cast<quint64>(digit);
    }
    return number;
}

QString versionCode(const QString& versionText)
{
    static const QRegularExpression leadingNumber(QStringLiteral("^\\s*(\\d+(?:\\.\\d*)?|\\.\\d+)"));
    const QRegularExpressionMatch match = leadingNumber.match(versionText);
    QString formatted = versionText;
    if (match.hasMatch()) {
        bool ok = false;
        const double number = match.captured(1).toDouble(&ok);
        if (ok)
            formatted = QString::number(number, 'f', 2);
    }
    if (formatted.isEmpty())
        return {};
    return formatted.left(1) + formatted.right(2);
}

QString GetWinVersion(const FactRegistry& registry)
{
    QString version
        = ReadRemoteReg(registry, RootKey::LocalMachine, k9xSystemKey, QStringLiteral("VersionNumber"));
    if (version.isEmpty())
        version
            = ReadRemoteReg(registry, RootKey::LocalMachine, kNtSystemKey, QStringLiteral("CurrentVersion"));
    const QString code = versionCode(version);
    if (code == u"510" || code == u"500")
        return QStringLiteral("NT");
    if (code == u"490" || code == u"422" || code == u"410")
        return QStringLiteral("9x");
    if (code == u"400")
        return QStringLiteral("9x/NT");
    return code;
}

} // namespace vindaro::sysinfo

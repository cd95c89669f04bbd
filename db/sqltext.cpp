#include "db/sqltext.h"

#include <charconv>
#include <cmath>

namespace corvane {

QString sqlEscape(const QString& text)
{
    QString out;
    out.reserve(text.size() + 8);
    for (const QChar c : text) {
        switch (c.unicode()) {
        case 0: out += QLatin1String("\\0"); break;
        case '\'': out += QLatin1String("\\'"); break;
        case '"': out += QLatin1String("\\\""); break;
        case '\\': out += QLatin1String("\\\\"); break;
        case '\n': out += QLatin1String("\\n"); break;
        case '\r': out += QLatin1String("\\r"); break;
        case 0x1a: out += QLatin1String("\\Z"); break;
        default: out += c;
        }
    }
    return out;
}

QString sqlQuote(const QString& text)
{
    return QLatin1Char('\'') + sqlEscape(text) + QLatin1Char('\'');
}

QString sqlName(const QString& name)
{
    QString inner = name;
    inner.replace(QLatin1Char('`'), QLatin1String("``"));
    return QLatin1Char('`') + inner + QLatin1Char('`');
}

QString sqlLiteral(const QVariant& value)
{
    if (value.isNull())
        return QStringLiteral("NULL");
    switch (value.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
        return value.toString();
    case QMetaType::Double:
    case QMetaType::Float: {
        // Shortest decimal text that reads back as the same double, never an exponent.
        const double v = value.toDouble();
        if (!std::isfinite(v))
            return QStringLiteral("NULL");
        char buffer[400];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, v == 0 ? 0.0 : v, std::chars_format::fixed).ptr;
        return QString::fromLatin1(buffer, int(end - buffer));
    }
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    default:
        return sqlQuote(value.toString());
    }
}

} // namespace corvane

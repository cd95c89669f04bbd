#include "db/sqltext.h"

#include <charconv>
#include <cmath>

namespace corvane {

namespace {

// Appends text escaped, copying the runs between the characters to escape whole.
void appendEscaped(QString& out, QStringView text)
{
    const QChar* run = text.data();
    const QChar* const end = run + text.size();
    for (const QChar* c = run; c != end; ++c) {
        const char16_t u = c->unicode();
        if (u > '\\') // the largest character escaped
            continue;
        QLatin1String escaped;
        switch (u) {
        case 0: escaped = QLatin1String("\\0"); break;
        case '\'': escaped = QLatin1String("\\'"); break;
        case '"': escaped = QLatin1String("\\\""); break;
        case '\\': escaped = QLatin1String("\\\\"); break;
        case '\n': escaped = QLatin1String("\\n"); break;
        case '\r': escaped = QLatin1String("\\r"); break;
        case 0x1a: escaped = QLatin1String("\\Z"); break;
        default: continue;
        }
        out.append(run, c - run);
        out += escaped;
        run = c + 1;
    }
    out.append(run, end - run);
}

} // namespace

QString sqlQuote(const QString& text)
{
    QString out;
    out.reserve(text.size() + 10);
    appendQuoted(out, text);
    return out;
}

void appendQuoted(QString& out, const QString& text)
{
    out += QLatin1Char('\'');
    appendEscaped(out, text);
    out += QLatin1Char('\'');
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

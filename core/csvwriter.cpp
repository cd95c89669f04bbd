#include "core/csvwriter.h"

namespace corvane {

QString csvRecord(const QStringList& fields)
{
    QStringList out;
    out.reserve(fields.size());
    for (const QString& field : fields) {
        const bool quote = field.contains(QLatin1Char(',')) || field.contains(QLatin1Char('"'))
            || field.contains(QLatin1Char('\n')) || field.contains(QLatin1Char('\r'))
            || (!field.isEmpty() && (field.front().isSpace() || field.back().isSpace()));
        if (quote)
            out << QLatin1Char('"') + QString(field).replace(QLatin1Char('"'), QStringLiteral("\"\"")) + QLatin1Char('"');
        else
            out << field;
    }
    return out.join(QLatin1Char(',')) + QStringLiteral("\r\n");
}

} // namespace corvane

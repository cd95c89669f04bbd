#include "core/clientstatus.h"

#include <QStringList>

namespace corvane {

namespace {

// Stored number and shown name, in the order the lists show them.
const QString kClientStatusList = QStringLiteral(
    "#0;Individual|#1;HUF|#3;Partnership Firm|#4;Artificial Juridical Person|#5;Foreign Company|#6;Local Authority|"
    "#9;AOP|#11;AOP(Trusts)|#13;BOI|#15;Public Limited Company|#16;Private Limited Company|#17;Co-operative Society");

QList<ClientStatus> parse(const QString& list)
{
    QList<ClientStatus> statuses;
    for (const QString& item : list.split(QLatin1Char('|'))) {
        const QString number = item.section(QLatin1Char(';'), 0, 0).mid(1);
        statuses.push_back({number.toInt(), item.section(QLatin1Char(';'), 1)});
    }
    return statuses;
}

} // namespace

const QList<ClientStatus>& clientStatuses()
{
    static const QList<ClientStatus> statuses = parse(kClientStatusList);
    return statuses;
}

QString clientStatusName(int code)
{
    for (const ClientStatus& s : clientStatuses())
        if (s.code == code)
            return s.name;
    return QString::number(code);
}

} // namespace corvane

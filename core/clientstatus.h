#pragma once

#include <QList>
#include <QString>

namespace corvane {

// A client's legal status: the number stored in FBT_Info.ClStatus and its name.
struct ClientStatus {
    int code = 0;
    QString name;
};

// The client status list in its order.
const QList<ClientStatus>& clientStatuses();

// The name for a stored number; a number not in the list shows as itself.
QString clientStatusName(int code);

} // namespace corvane

#include "db/contextconnection.h"

#include "core/failure.h"
#include "core/modbase.h"
#include "db/connection.h"

namespace corvane {

Connection& contextConnection()
{
    const auto& connection = modbase().CnnObj;
    if (!connection)
        throw Failure(err::ObjectNotSet, kSource, QStringLiteral("Object variable or With block variable not set"));
    return *connection;
}

} // namespace corvane

#pragma once

namespace corvane {

class Connection;

// The context's connection; fails as "object not set" (91) when the host gave none.
Connection& contextConnection();

} // namespace corvane

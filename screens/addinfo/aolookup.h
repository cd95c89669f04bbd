#pragma once

#include <QString>
#include <array>
#include <optional>

namespace corvane {

// The Assessing Officer code of the context's client (Area Code, AO Type,
// AO Range, AO No.) from the bank information component, looked up by the
// client's city. Nothing when the component has no answer or fails; failures
// are logged under the form's name and "CMDAO_CLICK".
std::optional<std::array<QString, 4>> LookupAoCode(const QString& formName);

// The client's city in the client master, trimmed; empty for an unknown client.
QString ClientCity();

} // namespace corvane

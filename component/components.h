#pragma once

namespace corvane {

// Registers our own implementations of the outside components by class
// identifier; done once, before the first ClsMain is used.
void registerDefaultComponents();

} // namespace corvane

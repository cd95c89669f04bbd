#pragma once

#include <memory>

namespace corvane {

class BankInfo;
class ResumeNext;

// Creates ORVMiscInf.ClsMain through the registry and hands it the context
// (InitMe), taking the connection back afterwards as the callers did. Each step
// runs through the caller's guard; null when the component cannot be created.
std::shared_ptr<BankInfo> createBankInfo(ResumeNext& guard);

} // namespace corvane

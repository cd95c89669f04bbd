#include "component/components.h"

#include "components/bankinfo/bankinfocomponent.h"
#include "core/objectregistry.h"

namespace corvane {

void registerDefaultComponents()
{
    ObjectRegistry& registry = ObjectRegistry::instance();
    registry.registerClass(kBankInfoClass, [] { return std::make_shared<BankInfoComponent>(); });
}

} // namespace corvane

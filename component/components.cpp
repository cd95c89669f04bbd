#include "component/components.h"

#include "components/bankinfo/bankinfocomponent.h"
#include "components/zip/zipcomponent.h"
#include "components/repview/repview.h"
#include "core/objectregistry.h"

namespace corvane {

void registerDefaultComponents()
{
    ObjectRegistry& registry = ObjectRegistry::instance();
    registry.registerClass(kBankInfoClass, [] { return std::make_shared<BankInfoComponent>(); });
    registerZipComponent();
    registry.registerClass(kReportViewerClass, [] { return std::make_shared<RepView>(); });
}

} // namespace corvane

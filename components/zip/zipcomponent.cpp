#include "components/zip/zipcomponent.h"

#include "components/zip/zipengine.h"
#include "core/progress.h"
#include "core/resumenext.h"

namespace corvane {

namespace {

// The component writes into the caller's log (the context's FBTLogger.log,
// which is what callers pass as LogFile) under the caller's procedure name.
long guarded(const QString& procName, const std::function<void()>& work)
{
    ResumeNext guard(QStringLiteral("ORVZipLib"), procName);
    return guard(work) ? 0 : 1;
}

} // namespace

void registerZipComponent()
{
    ObjectRegistry::instance().registerClass(kZipLibClass, [] { return std::make_shared<ZipComponent>(); });
}

long ZipComponent::ZipMyFolder(const QString& ProcName, const QString&, const QString& ZipFile, const QString& Folder,
                               Progress* progress, std::function<bool()> Cancelled, zip::DeflateAhead* Ahead)
{
    NullProgress none;
    Progress& shown = progress ? *progress : none;
    return guarded(ProcName, [&] { zip::packFolder(Folder, ZipFile, shown, Cancelled, Ahead); });
}

long ZipComponent::UnZipMyFolder(const QString& ProcName, const QString&, const QString& ZipFile, const QString& Folder)
{
    return guarded(ProcName, [&] { zip::unpackArchive(ZipFile, Folder); });
}

} // namespace corvane

#pragma once

#include "components/zip/ziplib.h"

namespace corvane {

// Our ORVZipLib.ClsMain, on libzip.
class ZipComponent : public ZipLib {
public:
    long ZipMyFolder(const QString& ProcName, const QString& LogFile, const QString& ZipFile, const QString& Folder,
                     Progress* progress, std::function<bool()> Cancelled = nullptr,
                     zip::DeflateAhead* Ahead = nullptr) override;
    long UnZipMyFolder(const QString& ProcName, const QString& LogFile, const QString& ZipFile,
                       const QString& Folder) override;
};

// Registers ZipComponent as ORVZipLib.ClsMain (the facade and the command line both do).
void registerZipComponent();

} // namespace corvane

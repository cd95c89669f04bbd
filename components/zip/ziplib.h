#pragma once

#include "core/objectregistry.h"

#include <QString>
#include <functional>

namespace corvane {

class Progress;
namespace zip {
class DeflateAhead;
}

inline const QString kZipLibClass = QStringLiteral("ORVZipLib.ClsMain");

// The archiving component: packs a folder into one ZIP file and unpacks one.
// Both calls log their failures under the caller's procedure name and return
// 0 on success, a non-zero number otherwise.
class ZipLib : public Component {
public:
    // Packs Folder (its name the archive's top folder) into ZipFile. The
    // archive is complete and synced when 0 is returned; otherwise nothing is
    // left under ZipFile's name. Progress gets the bar and the label; Cancelled
    // is asked now and then and stops the packing when it says yes. Files that
    // Ahead deflated while the folder was filled are not deflated again.
    virtual long ZipMyFolder(const QString& ProcName, const QString& LogFile, const QString& ZipFile,
                             const QString& Folder, Progress* progress, std::function<bool()> Cancelled = nullptr,
                             zip::DeflateAhead* Ahead = nullptr) = 0;

    // Unpacks ZipFile into Folder (created when missing). An archive with an
    // entry that would land outside Folder is refused as a whole.
    virtual long UnZipMyFolder(const QString& ProcName, const QString& LogFile, const QString& ZipFile,
                               const QString& Folder) = 0;
};

} // namespace corvane

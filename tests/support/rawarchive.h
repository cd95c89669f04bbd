#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QtTest>

#include <zip.h>

namespace corvane::test {

struct RawEntry {
    QByteArray name;
    QByteArray data;
    zip_uint32_t mode = 0; // unix mode with its type bits; 0 = none recorded
};

// An archive written with libzip directly, with names exactly as given (hostile ones too).
inline void writeRawArchive(const QString& path, const QList<RawEntry>& entries)
{
    int code = 0;
    zip_t* za = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, &code);
    QVERIFY(za);
    for (const RawEntry& e : entries) {
        zip_source_t* src = zip_source_buffer(za, e.data.constData(), zip_uint64_t(e.data.size()), 0);
        const zip_int64_t index = zip_file_add(za, e.name.constData(), src, ZIP_FL_ENC_RAW);
        QVERIFY(index >= 0);
        zip_set_file_compression(za, zip_uint64_t(index), ZIP_CM_STORE, 0);
        if (e.mode)
            zip_file_set_external_attributes(za, zip_uint64_t(index), 0, ZIP_OPSYS_UNIX, e.mode << 16);
    }
    QCOMPARE(zip_close(za), 0);
}

} // namespace corvane::test

#pragma once

#include <QString>
#include <exception>

namespace corvane {

// The one failure type. The number is what the log line shows: our own for
// programming faults (9 subscript out of range, 13 type mismatch, 91 object not
// set, 429 cannot create object), the MySQL error code for database failures,
// errno for files.
class Failure : public std::exception {
public:
    Failure(long number, QString source, QString description)
        : number_(number), source_(std::move(source)), description_(std::move(description)),
          what_(description_.toUtf8()) {}

    long number() const { return number_; }
    const QString& source() const { return source_; }
    const QString& description() const { return description_; }
    const char* what() const noexcept override { return what_.constData(); }

private:
    long number_;
    QString source_;
    QString description_;
    QByteArray what_;
};

namespace err {
constexpr long InvalidCall = 5;
constexpr long SubscriptOutOfRange = 9;
constexpr long TypeMismatch = 13;
constexpr long FileNotFound = 53;
constexpr long PathNotFound = 76;
constexpr long ObjectNotSet = 91;
constexpr long CannotCreateObject = 429;
constexpr long NoCurrentRecord = 3021;
constexpr long RecordsetClosed = 3704;
}

inline const QString kSource = QStringLiteral("Corvane");

} // namespace corvane

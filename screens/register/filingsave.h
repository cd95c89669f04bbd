#pragma once

#include "screens/register/returnregister.h"

#include <QString>
#include <QVector>

namespace corvane {

class Connection;
class Prompter;
class ResumeNext;

// Saving the filing details of the register: the whole grid, or one client.
// Both keep the interest date in step with the filing date, asking first.
namespace filing {

// The statement texts; date and number are the values to write.
QString insertStatement(const QString& code, int year, const QString& date, const QString& number);
QString updateStatement(const QString& code, int year, const QString& date, const QString& number,
                        const QString& interestPart);

// Whether changing the filing date to filed asks about the stored interest date.
bool asksAboutInterest(const QString& stored, const QString& filed);

// The interest part of the update statement; stored (the interest date kept
// for the client) becomes what is written. Asks through the prompter when the
// stored date is a real date different from the new filing date.
QString interestPart(QString& stored, const QString& filed, Prompter& prompter);

// "Date Should be on or after 01/04/" + Y when a full date lies on or before 31 March of Y.
bool tooEarly(const QString& date, int checkYear);
QString tooEarlyMessage(int checkYear);

// The check pass over the grid rows: the index of the first row whose date is
// too early, or -1. The check year is the first four characters of the year item.
int checkGrid(const QVector<returnregister::Row>& rows, const QString& yearItem);

// Why a filing date or acknowledgement number would not fit its column, or empty text.
QString tooLong(const QString& date, const QString& number);
// The index of the first grid row tooLong() refuses, or -1.
int tooLongRow(const QVector<returnregister::Row>& rows);

// The write pass: one statement per row that needs one, each followed by a
// flush; a failed statement is logged through the guard and ends the pass.
// Rows are updated to what was written. Returns the number of rows written.
int writeGrid(Connection& connection, QVector<returnregister::Row>& rows, const QString& yearItem, Prompter& prompter,
              ResumeNext& guard);

// One client from the entry view.
struct ClientSave {
    QString code;      // txtcode
    QString dateBox;   // txtfldt as shown ("dd/mm/yyyy" with all digits, anything else counts as empty)
    QString number;    // txtrecno
};

enum class Outcome { Saved, NoClient, UnknownCode, TooEarly, TooLong, Failed };

// The message shown for an outcome; empty for Saved and Failed.
QString message(Outcome outcome, const QString& yearItem, const ClientSave& save = {});

// Checks, writes and copies what was written into the client's entry.
Outcome saveClient(Connection& connection, QVector<returnregister::Entry>& entries, const ClientSave& save,
                   const QString& yearItem, Prompter& prompter, ResumeNext& guard);

} // namespace filing
} // namespace corvane

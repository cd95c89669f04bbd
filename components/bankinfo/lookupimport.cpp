#include "components/bankinfo/lookupimport.h"

#include "components/bankinfo/csvreader.h"
#include "core/failure.h"
#include "core/progress.h"
#include "db/connection.h"
#include "db/sqltext.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>

namespace corvane::bankinfo {

namespace {

const QString kImportSource = QStringLiteral("ORVMiscInf.Import");

struct FieldSpec {
    QString column; // in the list's table
    QString label;  // as the user writes it in the first line
    QStringList aliases;
    bool required;
};

QVector<FieldSpec> fieldSpecs(Kind kind)
{
    const FieldSpec ifsc{QStringLiteral("IFSC"), QStringLiteral("IFSC"), {QStringLiteral("IFSC"), QStringLiteral("IFSCCODE")}, true};
    const FieldSpec micr{QStringLiteral("MICR"), QStringLiteral("MICR"), {QStringLiteral("MICR"), QStringLiteral("MICRCODE")}, true};
    const FieldSpec bank{QStringLiteral("Bank"), QStringLiteral("BANK"), {QStringLiteral("BANK"), QStringLiteral("BANKNAME"), QStringLiteral("NAMEOFBANK")}, true};
    const FieldSpec branch{QStringLiteral("Branch"), QStringLiteral("BRANCH"), {QStringLiteral("BRANCH"), QStringLiteral("BRANCHNAME")}, true};
    const FieldSpec address{QStringLiteral("Address"), QStringLiteral("ADDRESS"), {QStringLiteral("ADDRESS"), QStringLiteral("BRANCHADDRESS"), QStringLiteral("ADDRESSOFBANKBRANCH")}, false};
    const FieldSpec city{QStringLiteral("City"), QStringLiteral("CITY"), {QStringLiteral("CITY"), QStringLiteral("CENTRE"), QStringLiteral("CENTER")}, false};
    const FieldSpec district{QStringLiteral("District"), QStringLiteral("DISTRICT"), {QStringLiteral("DISTRICT")}, false};
    const FieldSpec state{QStringLiteral("State"), QStringLiteral("STATE"), {QStringLiteral("STATE")}, false};
    auto optional = [](FieldSpec f) {
        f.required = false;
        return f;
    };
    switch (kind) {
    case Kind::Banks:
        return {ifsc, bank, branch,
                {QStringLiteral("BranchCode"), QStringLiteral("BSR CODE"), {QStringLiteral("BSRCODE"), QStringLiteral("BSR"), QStringLiteral("BRANCHCODE")}, false},
                optional(micr), address, city, district, state};
    case Kind::Micr:
        return {micr, bank, branch, address, city, district, state, optional(ifsc)};
    case Kind::Ao:
        return {{QStringLiteral("AreaCode"), QStringLiteral("AREA CODE"), {QStringLiteral("AREACODE"), QStringLiteral("AREA")}, true},
                {QStringLiteral("AoType"), QStringLiteral("AO TYPE"), {QStringLiteral("AOTYPE"), QStringLiteral("TYPE")}, true},
                {QStringLiteral("RangeCode"), QStringLiteral("RANGE CODE"), {QStringLiteral("RANGECODE"), QStringLiteral("RANGE")}, true},
                {QStringLiteral("AoNo"), QStringLiteral("AO NUMBER"), {QStringLiteral("AONUMBER"), QStringLiteral("AONO"), QStringLiteral("AONUM")}, true},
                {QStringLiteral("City"), QStringLiteral("CITY"), {QStringLiteral("CITY")}, true},
                {QStringLiteral("Jurisdiction"), QStringLiteral("JURISDICTION"), {QStringLiteral("JURISDICTION"), QStringLiteral("DESCRIPTION")}, false}};
    }
    return {};
}

// "Micr Code", "MICR_CODE" and "micr code" all name the same column.
QString normalisedHeading(const QString& heading)
{
    QString out;
    for (const QChar c : heading)
        if (c.isLetterOrNumber())
            out += c.toUpper();
    return out;
}

int maxLengthOf(Kind kind, const QString& column)
{
    for (const Column& c : tableDef(kind).columns)
        if (c.name == column)
            return c.maxLength;
    return 0;
}

// Checks and completes one row (values in the order of fieldSpecs); returns why it is refused, or empty.
QString checkRow(Kind kind, const QVector<FieldSpec>& specs, QStringList& values)
{
    static const QRegularExpression ifscPattern(QStringLiteral("^[A-Z]{4}0[A-Z0-9]{6}$"));
    static const QRegularExpression nineDigits(QStringLiteral("^[0-9]{9}$"));
    static const QRegularExpression areaPattern(QStringLiteral("^[A-Z]{3}$"));
    static const QRegularExpression typePattern(QStringLiteral("^[A-Z]{1,2}$"));
    static const QRegularExpression numberPattern(QStringLiteral("^[0-9]{1,5}$"));

    auto index = [&](const QString& column) {
        for (int i = 0; i < specs.size(); ++i)
            if (specs.at(i).column == column)
                return i;
        return -1;
    };
    auto value = [&](const QString& column) -> QString& { return values[index(column)]; };

    for (int i = 0; i < specs.size(); ++i)
        if (specs.at(i).required && values.at(i).isEmpty())
            return QStringLiteral("%1 is empty").arg(specs.at(i).label);

    switch (kind) {
    case Kind::Banks: {
        QString& ifsc = value(QStringLiteral("IFSC"));
        ifsc = ifsc.toUpper();
        if (!ifscPattern.match(ifsc).hasMatch())
            return QStringLiteral("IFSC '%1' is not four letters, a 0 and six letters or digits").arg(ifsc);
        QString& code = value(QStringLiteral("BranchCode"));
        if (code.isEmpty())
            code = ifsc.right(6); // the branch part of the IFSC
        QString& micr = value(QStringLiteral("MICR"));
        if (!nineDigits.match(micr).hasMatch())
            micr.clear(); // many branches have none ("NA")
        break;
    }
    case Kind::Micr: {
        const QString& micr = value(QStringLiteral("MICR"));
        if (!nineDigits.match(micr).hasMatch())
            return QStringLiteral("MICR '%1' is not nine digits").arg(micr);
        QString& ifsc = value(QStringLiteral("IFSC"));
        ifsc = ifsc.toUpper();
        if (!ifscPattern.match(ifsc).hasMatch())
            ifsc.clear();
        break;
    }
    case Kind::Ao: {
        QString& area = value(QStringLiteral("AreaCode"));
        area = area.toUpper();
        if (!areaPattern.match(area).hasMatch())
            return QStringLiteral("AREA CODE '%1' is not three letters").arg(area);
        QString& type = value(QStringLiteral("AoType"));
        type = type.toUpper();
        if (!typePattern.match(type).hasMatch())
            return QStringLiteral("AO TYPE '%1' is not one or two letters").arg(type);
        if (!numberPattern.match(value(QStringLiteral("RangeCode"))).hasMatch())
            return QStringLiteral("RANGE CODE '%1' is not a number of up to five digits").arg(value(QStringLiteral("RangeCode")));
        if (!numberPattern.match(value(QStringLiteral("AoNo"))).hasMatch())
            return QStringLiteral("AO NUMBER '%1' is not a number of up to five digits").arg(value(QStringLiteral("AoNo")));
        break;
    }
    }

    for (int i = 0; i < specs.size(); ++i) {
        const int max = maxLengthOf(kind, specs.at(i).column);
        if (values.at(i).size() > max)
            return QStringLiteral("%1 is longer than %2 characters").arg(specs.at(i).label).arg(max);
    }
    return QString();
}

// Collects rows into multi-row inserts; a key already present is replaced.
class BatchWriter {
public:
    BatchWriter(Connection& c, Kind kind, const QVector<FieldSpec>& specs, const ImportOptions& options)
        : connection_(c), kind_(kind), options_(options)
    {
        const TableDef& def = tableDef(kind);
        QStringList columns, updates;
        for (const FieldSpec& f : specs) {
            columns << sqlName(f.column);
            if (!def.key.contains(f.column))
                updates << QStringLiteral("%1=VALUES(%1)").arg(sqlName(f.column));
        }
        head_ = QStringLiteral("INSERT INTO %1 (%2) VALUES ").arg(sqlName(def.name), columns.join(QLatin1Char(',')));
        tail_ = QStringLiteral(" ON DUPLICATE KEY UPDATE ") + updates.join(QLatin1Char(','));
    }

    void add(const QStringList& values)
    {
        QString tuple = QStringLiteral("(");
        for (int i = 0; i < values.size(); ++i) {
            if (i)
                tuple += QLatin1Char(',');
            tuple += sqlQuote(values.at(i));
        }
        tuple += QLatin1Char(')');
        if (rows_)
            pending_ += QLatin1Char(',');
        pending_ += tuple;
        if (++rows_ >= options_.batchRows)
            flush();
    }

    void flush()
    {
        if (!rows_)
            return;
        if (options_.replace && !cleared_)
            connection_.execute(QStringLiteral("DELETE FROM ") + sqlName(tableDef(kind_).name));
        cleared_ = true;
        connection_.execute(head_ + pending_ + tail_);
        written_ += rows_;
        rows_ = 0;
        pending_.clear();
    }

    int written() const { return written_; }

private:
    Connection& connection_;
    Kind kind_;
    ImportOptions options_;
    QString head_, tail_, pending_;
    int rows_ = 0;
    int written_ = 0;
    bool cleared_ = false;
};

QString missingColumnsText(const QVector<FieldSpec>& specs, const QVector<int>& positions)
{
    QStringList missing;
    for (int i = 0; i < specs.size(); ++i)
        if (specs.at(i).required && positions.at(i) < 0)
            missing << specs.at(i).label;
    return missing.join(QStringLiteral(", "));
}

} // namespace

QString requiredColumnsText(Kind kind)
{
    QStringList required, optional;
    for (const FieldSpec& f : fieldSpecs(kind))
        (f.required ? required : optional) << f.label;
    return required.join(QStringLiteral(", ")) + QStringLiteral(" (also read when present: ")
        + optional.join(QStringLiteral(", ")) + QLatin1Char(')');
}

ImportResult importDevice(Connection& connection, Kind kind, QIODevice& device, Progress& progress,
                          const ImportOptions& options, const QString& name)
{
    const QVector<FieldSpec> specs = fieldSpecs(kind);
    const QString what = name.isEmpty() ? QStringLiteral("the file") : name;
    CsvReader reader(device);

    // The first non-blank line names the columns.
    QStringList header;
    while (reader.next()) {
        if (!reader.blank()) {
            header = reader.fields();
            break;
        }
    }
    if (header.isEmpty())
        throw Failure(err::InvalidCall, kImportSource,
                      QStringLiteral("%1 is empty: its first line must name the columns %2")
                          .arg(what, requiredColumnsText(kind)));

    QVector<int> positions(specs.size(), -1);
    int width = 0; // up to the last named column
    for (int col = 0; col < header.size(); ++col) {
        const QString heading = normalisedHeading(header.at(col));
        if (heading.isEmpty())
            continue;
        width = col + 1;
        for (int i = 0; i < specs.size(); ++i)
            if (positions[i] < 0 && specs.at(i).aliases.contains(heading))
                positions[i] = col;
    }
    const QString missing = missingColumnsText(specs, positions);
    if (!missing.isEmpty())
        throw Failure(err::InvalidCall, kImportSource,
                      QStringLiteral("%1 cannot be read as the %2: its first line (line %3) lacks the column%4 %5; it names %6")
                          .arg(what, kindDescription(kind))
                          .arg(reader.lineNumber())
                          .arg(missing.contains(QLatin1Char(',')) ? QStringLiteral("s") : QString(), missing,
                               header.join(QStringLiteral(", "))));

    BankInfoStore(connection).ensureTables();
    BatchWriter writer(connection, kind, specs, options);
    ImportResult result;
    const qint64 size = device.isSequential() ? 0 : device.size();
    int lastPercent = -1;
    progress.setRange(0, 100);
    progress.setValue(0);

    auto refuse = [&](const QString& reason) {
        result.refused << QStringLiteral("line %1: %2").arg(reader.lineNumber()).arg(reason);
    };

    QStringList values;
    while (reader.next()) {
        if (reader.blank())
            continue;
        ++result.lines;
        const QStringList& fields = reader.fields();
        if (reader.unclosedQuote()) {
            refuse(QStringLiteral("a quoted value is not closed"));
        } else if (fields.size() < width) {
            refuse(QStringLiteral("has %1 values, the first line names %2 columns").arg(fields.size()).arg(width));
        } else if (fields.size() > header.size()
                   && !std::all_of(fields.begin() + header.size(), fields.end(), [](const QString& v) { return v.isEmpty(); })) {
            refuse(QStringLiteral("has %1 values, more than the %2 columns of the first line (a comma in an unquoted value?)")
                       .arg(fields.size()).arg(header.size()));
        } else {
            values.clear();
            for (int i = 0; i < specs.size(); ++i)
                values << (positions.at(i) >= 0 ? fields.at(positions.at(i)) : QString());
            const QString reason = checkRow(kind, specs, values);
            if (reason.isEmpty())
                writer.add(values);
            else
                refuse(reason);
        }
        if (size > 0 && (result.lines % 512) == 0) {
            const int percent = int(reader.bytesRead() * 100 / size);
            if (percent != lastPercent) {
                lastPercent = percent;
                progress.setValue(percent);
                progress.setText(QStringLiteral("line %1").arg(reader.lineNumber()));
            }
        }
    }
    writer.flush();
    result.loaded = writer.written();
    progress.setValue(100);
    progress.setText(QStringLiteral("%1 lines read").arg(reader.lineNumber()));
    return result;
}

ImportResult importFile(Connection& connection, Kind kind, const QString& path, Progress& progress,
                        const ImportOptions& options)
{
    QFile file(path);
    if (!QFileInfo(path).isFile())
        throw Failure(err::FileNotFound, kImportSource, QStringLiteral("%1: no such file").arg(path));
    if (!file.open(QIODevice::ReadOnly))
        throw Failure(err::PathNotFound, kImportSource, QStringLiteral("%1: %2").arg(path, file.errorString()));
    return importDevice(connection, kind, file, progress, options, QFileInfo(path).fileName());
}

QString findDemoFolder(const QString& appPath)
{
    for (const QString& base : {appPath, QCoreApplication::applicationDirPath()}) {
        const QString folder = base + QStringLiteral("/demo");
        if (!base.isEmpty() && QFileInfo(folder).isDir())
            return folder;
    }
    return QString();
}

QStringList loadDemoLists(Connection& connection, const QString& demoFolder)
{
    struct DemoFile {
        Kind kind;
        QString file;
    };
    const DemoFile files[] = {{Kind::Banks, QStringLiteral("DEMO-bank-branches.csv")},
                              {Kind::Micr, QStringLiteral("DEMO-bank-branches.csv")},
                              {Kind::Ao, QStringLiteral("DEMO-ao-codes.csv")}};
    BankInfoStore store(connection);
    NullProgress quiet;
    QStringList lines;
    for (const DemoFile& f : files) {
        const int present = store.count(f.kind);
        if (present > 0) {
            lines << QStringLiteral("%1 holds %2 %3: no demo rows added")
                         .arg(kindDescription(f.kind))
                         .arg(present)
                         .arg(present == 1 ? QStringLiteral("row") : QStringLiteral("rows"));
            continue;
        }
        const ImportResult r = importFile(connection, f.kind, demoFolder + QLatin1Char('/') + f.file, quiet);
        lines << QStringLiteral("%1: %2 demo rows loaded").arg(kindDescription(f.kind)).arg(r.loaded);
    }
    return lines;
}

} // namespace corvane::bankinfo

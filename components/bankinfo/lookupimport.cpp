#include "components/bankinfo/lookupimport.h"

#include "components/bankinfo/csvreader.h"
#include "core/failure.h"
#include "core/progress.h"
#include "db/connection.h"
#include "db/schema.h"
#include "db/sqltext.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <utility>

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

// Text from the file as it may be shown: control characters as \xNN, so that
// a file cannot drive the user's terminal.
bool isControl(QChar c)
{
    const char16_t u = c.unicode();
    return u < 0x20 || u == 0x7F || (u >= 0x80 && u < 0xA0);
}

QString printable(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        if (isControl(c))
            out += QStringLiteral("\\x%1").arg(int(u), 2, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

// "[A-Z]{min,max}" or "[0-9]{min,max}" for the whole text, as the list's codes are written.
bool allOf(const QString& text, qsizetype min, qsizetype max, char16_t from, char16_t to)
{
    return text.size() >= min && text.size() <= max
        && std::all_of(text.cbegin(), text.cend(), [&](QChar c) { return c.unicode() >= from && c.unicode() <= to; });
}
bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}
bool isCapital(QChar c)
{
    return c >= u'A' && c <= u'Z';
}
// Four capitals, a 0 and six capitals or digits.
bool isIfsc(const QString& text)
{
    if (text.size() != 11 || text.at(4) != u'0')
        return false;
    for (int i = 0; i < 11; ++i)
        if (i != 4 && !isCapital(text.at(i)) && (i < 4 || !isDigit(text.at(i))))
            return false;
    return true;
}

// Checks and completes rows (values in the order of fieldSpecs); the columns
// it needs are looked up once for the file.
class RowCheck {
public:
    RowCheck(Kind kind, const QVector<FieldSpec>& specs) : kind_(kind), specs_(specs)
    {
        auto index = [&](const QString& column) {
            for (int i = 0; i < specs.size(); ++i)
                if (specs.at(i).column == column)
                    return i;
            return -1;
        };
        ifsc_ = index(QStringLiteral("IFSC"));
        micr_ = index(QStringLiteral("MICR"));
        branchCode_ = index(QStringLiteral("BranchCode"));
        area_ = index(QStringLiteral("AreaCode"));
        type_ = index(QStringLiteral("AoType"));
        range_ = index(QStringLiteral("RangeCode"));
        aoNo_ = index(QStringLiteral("AoNo"));
        for (const FieldSpec& f : specs) {
            maxLength_ << maxLengthOf(kind, f.column);
            breaksAllowed_ << (f.column == QStringLiteral("Address"));
        }
    }

    // Why the row is refused, or empty.
    QString operator()(QStringList& values) const
    {
        const QVector<FieldSpec>& specs = specs_;
        for (int i = 0; i < specs.size(); ++i)
            if (specs.at(i).required && values.at(i).isEmpty())
                return QStringLiteral("%1 is empty").arg(specs.at(i).label);
        // A line break belongs in an address; other control characters belong nowhere.
        for (int i = 0; i < specs.size(); ++i) {
            for (const QChar c : values.at(i)) {
                const bool lineBreak = c == QLatin1Char('\n') || c == QLatin1Char('\r');
                if (isControl(c) && !(breaksAllowed_.at(i) && lineBreak))
                    return QStringLiteral("%1 holds the control character %2").arg(specs.at(i).label, printable(c));
            }
        }

        switch (kind_) {
        case Kind::Banks: {
            QString& ifsc = values[ifsc_];
            ifsc = ifsc.toUpper();
            if (!isIfsc(ifsc))
                return QStringLiteral("IFSC '%1' is not four letters, a 0 and six letters or digits").arg(ifsc);
            QString& code = values[branchCode_];
            if (code.isEmpty())
                code = ifsc.right(6); // the branch part of the IFSC
            QString& micr = values[micr_];
            if (!allOf(micr, 9, 9, u'0', u'9'))
                micr.clear(); // many branches have none ("NA")
            break;
        }
        case Kind::Micr: {
            const QString& micr = values.at(micr_);
            if (!allOf(micr, 9, 9, u'0', u'9'))
                return QStringLiteral("MICR '%1' is not nine digits").arg(micr);
            QString& ifsc = values[ifsc_];
            ifsc = ifsc.toUpper();
            if (!isIfsc(ifsc))
                ifsc.clear();
            break;
        }
        case Kind::Ao: {
            QString& area = values[area_];
            area = area.toUpper();
            if (!allOf(area, 3, 3, u'A', u'Z'))
                return QStringLiteral("AREA CODE '%1' is not three letters").arg(area);
            QString& type = values[type_];
            type = type.toUpper();
            if (!allOf(type, 1, 2, u'A', u'Z'))
                return QStringLiteral("AO TYPE '%1' is not one or two letters").arg(type);
            if (!allOf(values.at(range_), 1, 5, u'0', u'9'))
                return QStringLiteral("RANGE CODE '%1' is not a number of up to five digits").arg(values.at(range_));
            if (!allOf(values.at(aoNo_), 1, 5, u'0', u'9'))
                return QStringLiteral("AO NUMBER '%1' is not a number of up to five digits").arg(values.at(aoNo_));
            break;
        }
        }

        for (int i = 0; i < specs.size(); ++i)
            if (schema::storedLength(values.at(i)) > maxLength_.at(i))
                return QStringLiteral("%1 is longer than %2 characters").arg(specs.at(i).label).arg(maxLength_.at(i));
        return QString();
    }

private:
    Kind kind_;
    QVector<FieldSpec> specs_;
    int ifsc_, micr_, branchCode_, area_, type_, range_, aoNo_;
    QVector<int> maxLength_;
    QVector<bool> breaksAllowed_;
};

// Collects rows into multi-row inserts; a key already present is replaced.
// A replacing import loads into a table of its own that takes the list's
// place in one rename at the end, so that an import that is interrupted
// (a crash, a signal, a full disk) leaves the old list whole.
// The table being loaded is locked, so that the server writes its index
// blocks once at the end, and for a large load its name index is built
// once at the end by sorting instead of row by row.
class BatchWriter {
public:
    BatchWriter(Connection& c, Kind kind, const QVector<FieldSpec>& specs, const ImportOptions& options, qint64 bytes)
        : connection_(c), kind_(kind), options_(options)
    {
        const TableDef& def = tableDef(kind);
        target_ = options.replace ? def.name + QStringLiteral("__import") : def.name;
        if (options.replace) {
            dropLeftovers();
            connection_.execute(QStringLiteral("CREATE TABLE %1 LIKE %2").arg(sqlName(target_), sqlName(def.name)));
        }
        QStringList columns, updates;
        for (const FieldSpec& f : specs) {
            columns << sqlName(f.column);
            if (!def.key.contains(f.column))
                updates << QStringLiteral("%1=VALUES(%1)").arg(sqlName(f.column));
        }
        head_ = QStringLiteral("INSERT INTO %1 (%2) VALUES ").arg(sqlName(target_), columns.join(QLatin1Char(',')));
        tail_ = QStringLiteral(" ON DUPLICATE KEY UPDATE ") + updates.join(QLatin1Char(','));

        // An import interrupted before may have left the index off: the rows already there have it back first.
        connection_.execute(QStringLiteral("ALTER TABLE %1 ENABLE KEYS").arg(sqlName(target_)));
        const auto size = connection_.query(QStringLiteral("SELECT IFNULL(MAX(data_length), 0) FROM information_schema.tables"
                                                           " WHERE table_schema = DATABASE() AND LOWER(table_name) = LOWER(%1)")
                                                .arg(sqlQuote(target_)));
        const qint64 present = size.rows.value(0).value(0).toLongLong();
        connection_.execute(QStringLiteral("LOCK TABLES %1 WRITE").arg(sqlName(target_)));
        locked_ = true;
        // Rebuilding the index costs about what the table holds; keeping it up, what the file adds.
        if (bytes >= present / 4) {
            connection_.execute(QStringLiteral("ALTER TABLE %1 DISABLE KEYS").arg(sqlName(target_)));
            keysOff_ = true;
        }
    }

    void add(const QStringList& values)
    {
        if (rows_ == 0)
            pending_ = head_;
        pending_ += rows_ ? QLatin1String(",(") : QLatin1String("(");
        for (int i = 0; i < values.size(); ++i) {
            if (i)
                pending_ += QLatin1Char(',');
            appendQuoted(pending_, values.at(i));
        }
        pending_ += QLatin1Char(')');
        if (++rows_ >= options_.batchRows || pending_.size() >= kMaxStatementChars)
            flush();
    }

    ~BatchWriter()
    {
        if (finished_)
            return;
        try {
            connection_.collect(); // the batch the server is still writing ends first; the failure reported is an earlier one
        } catch (...) {
        }
        try {
            if (keysOff_ && !options_.replace)
                connection_.execute(QStringLiteral("ALTER TABLE %1 ENABLE KEYS").arg(sqlName(target_)));
            if (locked_)
                connection_.execute(QStringLiteral("UNLOCK TABLES"));
            if (options_.replace)
                dropLeftovers();
        } catch (...) {
            // the connection is gone, and the server released its lock; the next import restores the index
        }
    }

    // Sends the batch, and the file's next rows are read while the server
    // writes it; a batch that fails stops the import at the next flush.
    void flush()
    {
        if (!rows_)
            return;
        collect();
        pending_ += tail_;
        connection_.send(pending_);
        sent_ = rows_;
        rows_ = 0;
    }

    // Writes what is pending; a replacing import with at least one row takes the list's place.
    void finish()
    {
        flush();
        collect();
        if (keysOff_)
            connection_.execute(QStringLiteral("ALTER TABLE %1 ENABLE KEYS").arg(sqlName(target_)));
        keysOff_ = false;
        connection_.execute(QStringLiteral("UNLOCK TABLES"));
        locked_ = false;
        finished_ = true;
        if (!options_.replace)
            return;
        const QString name = tableDef(kind_).name;
        if (written_ > 0)
            connection_.execute(QStringLiteral("RENAME TABLE %1 TO %2, %3 TO %1")
                                    .arg(sqlName(name), sqlName(name + QStringLiteral("__old")), sqlName(target_)));
        dropLeftovers();
    }

    int written() const { return written_; }

private:
    void collect()
    {
        connection_.collect();
        written_ += std::exchange(sent_, 0);
    }

    // Well below the server's packet limit (16 MB by default; the text goes as UTF-8).
    static constexpr qsizetype kMaxStatementChars = 1 << 20;

    void dropLeftovers()
    {
        const QString name = tableDef(kind_).name;
        connection_.execute(QStringLiteral("DROP TABLE IF EXISTS %1, %2")
                                .arg(sqlName(name + QStringLiteral("__import")), sqlName(name + QStringLiteral("__old"))));
    }

    Connection& connection_;
    Kind kind_;
    ImportOptions options_;
    QString target_, head_, tail_, pending_;
    int rows_ = 0;
    int sent_ = 0; // rows of the statement the server is writing
    int written_ = 0;
    bool locked_ = false;
    bool keysOff_ = false;
    bool finished_ = false;
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
    const qint64 size = device.isSequential() ? 0 : device.size();
    BatchWriter writer(connection, kind, specs, options, size);
    ImportResult result;
    int lastPercent = -1;
    progress.setRange(0, 100);
    progress.setValue(0);

    auto refuse = [&](const QString& reason) {
        result.refused << QStringLiteral("line %1: %2").arg(reader.firstLine()).arg(printable(reason));
    };

    const RowCheck checkRow(kind, specs);
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
            const QString reason = checkRow(values);
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
    writer.finish();
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

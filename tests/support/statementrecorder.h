#pragma once

#include "db/statementobserver.h"

#include <QRegularExpression>
#include <QStringList>
#include <QVector>

namespace corvane::test {

// Records every statement run while it lives, so that a test can check the
// order of writes and flushes without restating the statements themselves.
class StatementRecorder : public StatementObserver {
public:
    struct Statement {
        QString sql;
        bool ok;
    };

    StatementRecorder() { setStatementObserver(this); }
    ~StatementRecorder() override { setStatementObserver(nullptr); }
    StatementRecorder(const StatementRecorder&) = delete;
    StatementRecorder& operator=(const StatementRecorder&) = delete;

    void ran(const Connection&, const QString& sql, bool ok) override
    {
        if (recording_)
            statements_.push_back({sql, ok});
    }
    void stop() { recording_ = false; }
    const QVector<Statement>& statements() const { return statements_; }

    static bool isFlush(const QString& sql) { return sql.simplified().startsWith(QLatin1String("flush tables"), Qt::CaseInsensitive); }
    static bool isWrite(const QString& sql)
    {
        static const QRegularExpression verb(QStringLiteral("^\\s*(insert|update|delete|replace|alter|create|drop|truncate|repair|rename)\\b"),
                                             QRegularExpression::CaseInsensitiveOption);
        return verb.match(sql).hasMatch();
    }
    // "verb table" of a write, e.g. "delete bill_det", "update fbt_info".
    static QString shape(const QString& sql)
    {
        static const QRegularExpression words(QStringLiteral("^\\s*(\\w+)\\s+(?:into\\s+|from\\s+|table\\s+)?`?(\\w+)"),
                                              QRegularExpression::CaseInsensitiveOption);
        const auto m = words.match(sql);
        return m.hasMatch() ? (m.captured(1) + QLatin1Char(' ') + m.captured(2)).toLower() : sql.left(20);
    }

    // The shapes of the successful writes, in order.
    QStringList writes() const
    {
        QStringList out;
        for (const Statement& s : statements_)
            if (s.ok && isWrite(s.sql))
                out << shape(s.sql);
        return out;
    }
    // The successful writes and the flushes, in order: "delete fbt_bankdet", "flush", ...
    QStringList sequence() const
    {
        QStringList out;
        for (const Statement& s : statements_)
            if (s.ok && isFlush(s.sql))
                out << QStringLiteral("flush");
            else if (s.ok && isWrite(s.sql))
                out << shape(s.sql);
        return out;
    }
    int flushes() const
    {
        int n = 0;
        for (const Statement& s : statements_)
            n += isFlush(s.sql) ? 1 : 0;
        return n;
    }
    // Successful writes with no flush after them before the next write or the end.
    QStringList unflushedWrites() const
    {
        QStringList out;
        QString pending;
        for (const Statement& s : statements_) {
            if (isFlush(s.sql)) {
                pending.clear();
            } else if (isWrite(s.sql)) {
                if (!pending.isEmpty())
                    out << pending;
                pending = s.ok ? shape(s.sql) : QString();
            }
        }
        if (!pending.isEmpty())
            out << pending;
        return out;
    }
    // Writes and flushes run after the first statement that failed.
    QStringList writesAfterFailure() const
    {
        QStringList out;
        bool failed = false;
        for (const Statement& s : statements_) {
            if (failed && (isWrite(s.sql) || isFlush(s.sql)))
                out << shape(s.sql);
            failed = failed || !s.ok;
        }
        return out;
    }

private:
    QVector<Statement> statements_;
    bool recording_ = true;
};

} // namespace corvane::test

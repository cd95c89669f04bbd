#include "support/testmain.h"

#include "core/prompter.h"

#include <QApplication>
#include <cstring>
#include <memory>

namespace corvane::test {

int runRegisteredTests(int argc, char** argv)
{
    QApplication app(argc, argv);
    corvane::setRealDialogsAllowed(false);
    QStringList args = app.arguments();
    QString only;
    if (args.size() > 1 && !args.at(1).startsWith(QLatin1Char('-'))) {
        for (const auto& entry : testClasses())
            if (args.at(1) == QLatin1String(entry.first))
                only = args.takeAt(1);
    }
    int failures = 0;
    for (const auto& [name, factory] : testClasses()) {
        if (!only.isEmpty() && only != QLatin1String(name))
            continue;
        std::unique_ptr<QObject> object(factory());
        failures += QTest::qExec(object.get(), args);
    }
    return failures == 0 ? 0 : 1;
}

} // namespace corvane::test

int main(int argc, char** argv)
{
    return corvane::test::runRegisteredTests(argc, argv);
}

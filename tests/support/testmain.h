#pragma once

#include <QObject>
#include <QtTest>
#include <functional>
#include <vector>

namespace corvane::test {

// Every test class of a folder registers itself; the folder's one executable runs them all.
using TestFactory = std::function<QObject*()>;
inline std::vector<std::pair<const char*, TestFactory>>& testClasses()
{
    static std::vector<std::pair<const char*, TestFactory>> list;
    return list;
}

struct TestRegistration {
    TestRegistration(const char* name, TestFactory factory) { testClasses().emplace_back(name, std::move(factory)); }
};

// Runs every registered class; arguments are Qt Test's (a class name as first
// argument runs only that class).
int runRegisteredTests(int argc, char** argv);

} // namespace corvane::test

#define CORVANE_TEST_CLASS(Class) \
    static const corvane::test::TestRegistration registration_##Class(#Class, [] { return new Class; });

#pragma once

#include <QString>

namespace corvane {

// Long work reports through this: a bar and a label on a screen, a line on a
// terminal in the command line.
class Progress {
public:
    virtual ~Progress() = default;
    virtual void setRange(int minimum, int maximum) = 0;
    virtual void setValue(int value) = 0;
    virtual void setText(const QString& text) = 0;
};

// Reports nowhere.
class NullProgress : public Progress {
public:
    void setRange(int, int) override {}
    void setValue(int) override {}
    void setText(const QString&) override {}
};

} // namespace corvane

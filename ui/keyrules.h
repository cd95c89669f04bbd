#pragma once

#include <QObject>
#include <QSet>
#include <functional>

class QLineEdit;
class QWidget;

namespace corvane {

// The keyboard of a screen. The form sees every
// key first: the single quote is dropped everywhere, Escape goes to the form,
// Enter moves on like Tab where asked, and text boxes either take digits only
// or turn small letters into capitals. Leaving a text box is reported too.
class KeyRules : public QObject {
public:
    enum class Box { Capitals, Digits };

    KeyRules(QWidget* form, std::function<void()> escape);

    // Watches every widget the form holds now.
    void watchAll();
    void textBox(QLineEdit* box, Box kind, std::function<void()> lostFocus = {});
    void enterAsTab(QWidget* widget);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* form_;
    std::function<void()> escape_;
    QSet<QObject*> digits_;
    QSet<QObject*> capitals_;
    QSet<QObject*> enterAsTab_;
    QHash<QObject*, std::function<void()>> lostFocus_;
};

} // namespace corvane

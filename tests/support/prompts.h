#pragma once

#include "core/chooser.h"
#include "core/modbase.h"
#include "core/prompter.h"

#include <functional>
#include <memory>

namespace corvane::test {

// A scripted prompter that lets the test act or look at the screen while a
// question is open (the user fixing the cause before answering Retry).
class HookedPrompter : public ScriptedPrompter {
public:
    using ScriptedPrompter::ask;
    std::function<void(const Question&)> onAsk;
    Answer ask(const Question& question) override
    {
        if (onAsk)
            onAsk(question);
        return ScriptedPrompter::ask(question);
    }
};

// A scripted prompter installed in the context; the test keeps a handle to it.
template <typename P = ScriptedPrompter>
std::shared_ptr<P> installPrompter()
{
    auto prompter = std::make_shared<P>();
    modbase().prompter = prompter;
    return prompter;
}

// A scripted folder and file chooser installed in the context.
inline std::shared_ptr<ScriptedChooser> installChooser()
{
    auto chooser = std::make_shared<ScriptedChooser>();
    modbase().chooser = chooser;
    return chooser;
}

} // namespace corvane::test

#pragma once

#include "data/Session.h"

#include <string>
#include <vector>

namespace dax::test {

// The statements sent in this thread while this lives, as the engine gets them, those that prepare a connection aside.
class SentStatements {
public:
    SentStatements() {
        SetStatementObserver([this](TextView statement) {
            for (const TextView ours : {u"velmora", u"talk"})
                if (statement.find(ours) != TextView::npos) return texts.push_back(ToUtf8(statement));
        });
    }
    SentStatements(const SentStatements&) = delete;
    SentStatements& operator=(const SentStatements&) = delete;
    ~SentStatements() { SetStatementObserver({}); }
    const std::vector<std::string>& Texts() const { return texts; }

private:
    std::vector<std::string> texts;
};

} // namespace dax::test

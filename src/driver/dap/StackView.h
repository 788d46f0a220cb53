// The stopped program's calls, as the editor sees them, and the places that it can be sent to.
#pragma once

#include "driver/dap/References.h"
#include "support/Path.h"

#include <QJsonObject>

class RequestArguments;
struct DapContext;

class StackView {
public:
    explicit StackView(DapContext& context) : m_context(context) {}

    // The bodies of the responses. Callers are looked for no further than the editor asks.
    QJsonObject stackTrace(const RequestArguments& arguments);
    QJsonObject loadedSources() const;
    QJsonObject gotoTargets(const RequestArguments& arguments);
    // Moves the pc to such a target.
    void jump(const RequestArguments& arguments);

    // The program goes on: what the editor knows of its frames is void.
    void forget();

private:
    struct Target {
        Path path;
        int line;
    };
    QJsonObject frame(unsigned number);

    DapContext& m_context;
    References<Target> m_targets;
};

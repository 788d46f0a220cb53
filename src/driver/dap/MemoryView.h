// The target's memories and its code, as the editor's views of them ask for.
#pragma once

#include "support/Path.h"

#include <QJsonObject>
#include <QString>

#include <cstdint>

class RequestArguments;
struct DapContext;

class MemoryView {
public:
    explicit MemoryView(DapContext& context) : m_context(context) {}

    // The bodies of the responses.
    QJsonObject read(const RequestArguments& arguments) const;
    QJsonObject write(const RequestArguments& arguments) const;
    // Instructions around an address; what is no code is filled up with entries that say so.
    QJsonObject disassemble(const RequestArguments& arguments) const;

private:
    int64_t following(int64_t address) const;
    QJsonObject instruction(int64_t address, Path& lastPath, int& lastLine) const;
    uint32_t readable(const QString& space, uint32_t address, uint32_t count) const;

    DapContext& m_context;
};

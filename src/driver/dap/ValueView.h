// The values of the stopped program, as the editor sees them: scopes, variables and expressions. Nothing is
// read before it is asked for, and of what has children only the level that is opened.
#pragma once

#include "debug/evaluation/ExpressionContext.h"
#include "driver/dap/LevelBuilder.h"
#include "driver/dap/References.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <map>

class RequestArguments;
struct DapContext;

class ValueView {
public:
    explicit ValueView(DapContext& context) : m_context(context) {}

    // The bodies of the responses.
    QJsonObject scopes(const RequestArguments& arguments);
    QJsonObject variables(const RequestArguments& arguments);
    QJsonObject setVariable(const RequestArguments& arguments);
    QJsonObject setExpression(const RequestArguments& arguments);
    // Of an expression; who looks at a value without being asked to change one may not assign.
    QJsonObject evaluate(const RequestArguments& arguments);
    QJsonObject completions(const RequestArguments& arguments);
    QJsonObject dataInfo(const RequestArguments& arguments);

    // Expressions of conditions and log messages. Throw HException.
    bool truth(unsigned frame, const QString& expression) const;
    QString text(unsigned frame, const QString& expression) const;
    // The address of a function or of a label.
    uint32_t codeAddress(const QString& name) const;

    // The program goes on: what the editor knows of its variables is void.
    void forget();

private:
    // What has children: a scope of a frame, or a value.
    struct Container {
        enum Kind { Locals, Parameters, Statics, Globals, Registers, Value } kind;
        unsigned frame;
        QString path;
        LevelBuilder::Shape shape = LevelBuilder::Plain;
        unsigned count = 0;
    };
    using Items = std::vector<LevelBuilder::Item>;

    unsigned frameNumber(const RequestArguments& arguments) const;
    ExpressionContext in(unsigned frame, bool readOnly) const;
    Items children(const Container& container, unsigned first, unsigned count, int radix) const;
    LevelBuilder::Item item(unsigned frame, const QString& expression, int radix, bool readOnly) const;
    QString childPath(int reference, const QString& name);
    QJsonObject assigned(unsigned frame, const QString& path, const RequestArguments& arguments);
    // The fields that variables and results share; `key` is that of the value's text.
    QJsonObject body(const LevelBuilder::Item& item, unsigned frame, const char* key);

    DapContext& m_context;
    References<Container> m_containers;
    std::map<std::pair<int, QString>, QString> m_paths; // of the children that the editor was told of
};

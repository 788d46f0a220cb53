#include "driver/dap/Launch.h"

#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/dap/SourceMap.h"
#include "driver/session/Options.h"

#include <algorithm>

namespace {

// Of a launch and of an attach, of a launch alone.
constexpr const char* Common[] = {"target", "setprop",  "solution", "project",
                                  "config", "fileType", "files",    "sourceMap"};
constexpr const char* OfLaunch[] = {"loadAddress", "entry",       "arguments",   "download",
                                    "verify",      "stopOnEntry", "breakSymbol", "coverage"};
// What editors use themselves.
constexpr const char* OfEditors[] = {"name",
                                     "type",
                                     "request",
                                     "noDebug",
                                     "preLaunchTask",
                                     "postDebugTask",
                                     "presentation",
                                     "internalConsoleOptions",
                                     "debugServer",
                                     "serverReadyAction",
                                     "suppressMultipleSessionWarning",
                                     "adapter",
                                     "cwd",
                                     "console"};

template <size_t N> bool contains(const char* const (&names)[N], const QString& name)
{
    return std::any_of(std::begin(names), std::end(names),
                       [&name](const char* known) { return name == QLatin1String(known); });
}

// A misspelt name would be a setting that silently has no effect.
void refuseUnknown(const RequestArguments& arguments, bool attach)
{
    const QStringList names = arguments.json().keys();
    for (const QString& name : names) {
        if (name.startsWith(QLatin1String("__")) || contains(OfEditors, name) || contains(Common, name))
            continue;
        if (!contains(OfLaunch, name))
            throw RequestFailure(QStringLiteral("unknown launch argument \"%1\"").arg(name));
        if (attach)
            throw RequestFailure(QStringLiteral("\"%1\" cannot be given to attach").arg(name));
    }
}

// PROPERTY=VALUE texts, or an object of them.
QStringList settings(const RequestArguments& arguments)
{
    QJsonValue given = arguments.json().value(QLatin1String("setprop"));
    if (!given.isObject())
        return arguments.textOrTexts("setprop");
    RequestArguments object = arguments.object("setprop");
    QStringList list;
    const QStringList names = object.json().keys();
    for (const QString& name : names) {
        QJsonValue value = object.json().value(name);
        if (!value.isString() && !value.isDouble() && !value.isBool())
            throw RequestFailure(QStringLiteral("argument \"setprop.%1\" must be a text").arg(name));
        list.append(name + QLatin1Char('=') + value.toVariant().toString());
    }
    return list;
}

// A number, or a text with one in C notation.
unsigned address(const RequestArguments& arguments, const char* name)
{
    QJsonValue given = arguments.json().value(QLatin1String(name));
    bool good = false;
    qulonglong value = 0;
    if (given.isString())
        value = given.toString().toULongLong(&good, 0);
    else
        value = qulonglong(arguments.count(name)), good = true;
    if (!good || value > 0xFFFFFFFFu)
        throw RequestFailure(QStringLiteral("argument \"%1\" is no address").arg(QLatin1String(name)));
    return unsigned(value);
}

} // namespace

Launch::Launch(const RequestArguments& arguments, bool attaches, Options& options, SourceMap& sourceMap)
    : attach(attaches)
{
    refuseUnknown(arguments, attaches);
    if (arguments.has("coverage"))
        throw RequestFailure("this version cannot record coverage");
    options.targetName = arguments.text("target", options.targetName);
    if (arguments.has("setprop"))
        options.propertySettings += settings(arguments);
    options.solutionFile = arguments.text("solution", options.solutionFile);
    options.projectName = arguments.text("project", options.projectName);
    options.configuration = arguments.text("config", options.configuration);
    if (arguments.has("files"))
        options.loadFileNames = arguments.textOrTexts("files");
    options.fileType = arguments.text("fileType", options.fileType);
    if (arguments.has("loadAddress"))
        options.loadAddress = address(arguments, "loadAddress");
    if (arguments.json().value(QLatin1String("entry")).isDouble())
        options.entry = QLatin1String("0x") + QString::number(address(arguments, "entry"), 16);
    else
        options.entry = arguments.text("entry", options.entry);
    // The first stands at the place of the program's name.
    if (arguments.has("arguments"))
        options.targetArguments = options.targetArguments.mid(0, 1) + arguments.textOrTexts("arguments");
    options.download = arguments.flag("download", options.download);
    options.verify = arguments.flag("verify", options.verify);
    options.breakSymbol = arguments.text("breakSymbol", options.breakSymbol);
    stopOnEntry = arguments.flag("stopOnEntry", false);

    QJsonValue map = arguments.json().value(QLatin1String("sourceMap"));
    if (map.isArray()) {
        for (const QJsonValue& entry : map.toArray()) {
            QJsonArray pair = entry.toArray();
            if (pair.size() != 2 || !pair[0].isString() || !pair[1].isString())
                throw RequestFailure("argument \"sourceMap\" must be a list of pairs of paths");
            sourceMap.add(pair[0].toString(), pair[1].toString());
        }
    } else {
        RequestArguments object = arguments.object("sourceMap");
        const QStringList names = object.json().keys();
        for (const QString& name : names)
            sourceMap.add(name, object.text(name.toUtf8().constData()));
    }
}

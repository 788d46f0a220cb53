// Runs one script in a bare script context:
//
//     esrun [-p] [-m MIB] FILE.js [ARGS...]      the file, or standard input for the name "-"
//     esrun [-p] [-m MIB] -e TEXT [ARGS...]      the text
//
// -p prints the completion value, -m sets the limit of memory in MiB (1 to 65536; 1024 otherwise). Exit
// status 0 on a normal completion, 1 after a failure, 130 after Ctrl-C.
#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESValue.h"
#include "script/engine/limits.h"
#include "script/host/BuiltinScript.h"
#include "script/host/HostEvaluation.h"
#include "script/native/ESLibrary.h"
#include "support/HException.h"

#include <QFile>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace {

volatile std::sig_atomic_t interrupted = 0;

void onInterrupt(int)
{
    interrupted = 1;
    // A second Ctrl-C ends the process even if the script is stuck in a native.
    std::signal(SIGINT, SIG_DFL);
}

class InterruptibleContext : public ESContext {
public:
    InterruptibleContext() : ESContext(Ask::NowAndThen) {}
    bool carryOnExecuting() override { return !interrupted; }
};

struct Arguments {
    bool print = false;
    size_t memory = ESLimits::MemoryBytes; // bytes
    const char* file = nullptr;
    const char* text = nullptr;
    int count = 0;
    char** rest = nullptr;
};

bool parseArguments(int argc, char** argv, Arguments& arguments)
{
    int at = 1;
    if (at < argc && !std::strcmp(argv[at], "-p")) {
        arguments.print = true;
        ++at;
    }
    if (at + 1 < argc && !std::strcmp(argv[at], "-m")) {
        bool ok = false;
        unsigned mebibytes = QByteArray(argv[at + 1]).toUInt(&ok);
        if (!ok || mebibytes < 1 || mebibytes > 65536)
            return false;
        arguments.memory = size_t(mebibytes) << 20;
        at += 2;
    }
    if (at + 1 < argc && !std::strcmp(argv[at], "-e")) {
        arguments.text = argv[at + 1];
        at += 2;
    } else if (at < argc && (argv[at][0] != '-' || !argv[at][1])) {
        arguments.file = argv[at++];
    } else {
        return false;
    }
    arguments.count = argc - at;
    arguments.rest = argv + at;
    return true;
}

bool readSource(const Arguments& arguments, QString& source)
{
    if (arguments.text) {
        source = QString::fromUtf8(arguments.text);
        return true;
    }
    QFile file;
    bool open = std::strcmp(arguments.file, "-") == 0
                    ? file.open(stdin, QIODevice::ReadOnly)
                    : (file.setFileName(QFile::decodeName(arguments.file)), file.open(QIODevice::ReadOnly));
    if (!open)
        return false;
    source = QString::fromUtf8(file.read(ESLimits::StringLength + 1));
    return true;
}

int fail(const QString& text)
{
    std::fflush(stdout);
    std::fprintf(stderr, "error: %s\n", text.toUtf8().constData());
    return 1;
}

int run(const Arguments& arguments)
{
    QString source;
    if (!readSource(arguments, source))
        return fail(QStringLiteral("cannot open script file \"%1\"").arg(QFile::decodeName(arguments.file)));

    BuiltinScript script;
    InterruptibleContext context;
    ESLibrary::mkexec(nullptr, &context);
    context.setMemoryLimit(arguments.memory);
    script.install(&context, arguments.count, arguments.rest);
    std::signal(SIGINT, onInterrupt);

    QString name = arguments.text ? QStringLiteral("-e") : QFile::decodeName(arguments.file);
    int status = 0;
    try {
        ESCompletion completion = context.eval(source, name);
        printScriptWarnings(&context);
        QByteArray result;
        if (completion.type == ESCompletion::Normal && arguments.print && !context.stopped())
            result = context.toString(completion.value, 10).toUtf8() + '\n';
        // The conversion runs script code, too.
        if (context.stopped()) {
            std::fflush(stdout);
            std::fputs("interrupted\n", stderr);
            return 130;
        }
        if (completion.type != ESCompletion::Normal)
            return fail(completion.text);
        std::fwrite(result.constData(), 1, size_t(result.size()), stdout);
    } catch (const ESException& exception) {
        // Of the conversion for -p.
        ESValue value = exception.value();
        bool error = context.iserrorobj(value);
        status = fail(error ? context.toString(context.get(value.object(), g_messageString))
                            : QStringLiteral("?"));
    } catch (const ESFatalError& failure) {
        printScriptWarnings(&context);
        status = fail(failure.text());
    } catch (const HException& failure) {
        printScriptWarnings(&context);
        status = fail(failure.text());
    }
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    // Output to a closed pipe ends the program without a word.
    std::signal(SIGPIPE, SIG_DFL);
    Arguments arguments;
    if (!parseArguments(argc, argv, arguments)) {
        std::fputs(
            "usage: esrun [-p] [-m MIB] FILE.js [ARGS...]\n       esrun [-p] [-m MIB] -e TEXT [ARGS...]\n",
            stderr);
        return 1;
    }
    int status = run(arguments);
    if ((std::fflush(stdout) != 0 || std::ferror(stdout)) && status == 0)
        status = fail(QStringLiteral("cannot write to standard output"));
    return status;
}

// The debug adapter in front of a hostile editor: framing, requests in any order with any arguments, and the
// texts that users write into breakpoints. No program is loaded; tests/dap/storm.test.js does the same to one
// that runs.
#include "driver/dap/Adapter.h"
#include "driver/dap/HitCondition.h"
#include "driver/dap/LogText.h"
#include "driver/dap/MemoryReference.h"
#include "driver/dap/MessageReader.h"
#include "driver/dap/Messages.h"
#include "driver/dap/RequestFailure.h"
#include "driver/session/FaceSwitch.h"
#include "driver/session/Loader.h"
#include "driver/session/Options.h"
#include "driver/session/ProgramRun.h"
#include "driver/session/Reporter.h"
#include "driver/session/SessionFace.h"
#include "driver/session/SessionSteps.h"
#include "maxq30/cpu/MAXQ30Debugger.h"

#include <QCoreApplication>

#include <cstdlib>
#include <sstream>

namespace {

// An answer is counted; its text is the concern of the tests.
class Answers : public MessageSink {
public:
    void send(const QByteArray& message) override
    {
        if (!message.startsWith("Content-Length: "))
            abort();
        ++count;
    }
    int count = 0;
};

class NoFace : public SessionFace {
public:
    void progress(int, int, const char*, const char*) override {}
    void message(const QString&) override {}
    void warning(const QString&) override {}
    void output(std::string_view) override {}
    void showLines(const QStringList&) override {}
};

void tryTexts(std::string_view bytes)
{
    QString text = QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
    try {
        HitCondition(text).holds(bytes.size());
    } catch (const RequestFailure&) {
    }
    try {
        LogText(text).expanded([](const QString& expression) { return expression; });
    } catch (const RequestFailure&) {
    }
    try {
        MemoryReference(text, int64_t(bytes.size()) - 8);
    } catch (const RequestFailure&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    static std::ostringstream errors;
    static Reporter reporter{"fuzz", errors};

    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    tryTexts(bytes.substr(0, 200));
    NoFace nobody;
    FaceSwitch face(nobody);
    Options options(reporter, face);
    Loader loader(face);
    MAXQ30Debugger theDebugger(&loader);
    SessionSteps steps(loader, options);
    ProgramRun run(loader);
    run.setDebugger(&theDebugger);
    Answers answers;
    Adapter adapter({loader, options, steps, run, face, [] {}, [](const QString&) {}}, answers);
    MessageReader reader;
    // The stream comes in two pieces, and each line of it is a message of its own as well.
    reader.add(bytes.substr(0, size / 2));
    reader.add(bytes.substr(size / 2));
    int messages = 0;
    while (auto item = reader.next()) {
        ++messages;
        item->fault ? adapter.handleFault(item->fault) : adapter.handle(item->json);
    }
    while (!bytes.empty() && !adapter.done()) {
        size_t end = std::min(bytes.find('\n'), bytes.size());
        adapter.lookAhead(QByteArray(bytes.data(), qsizetype(end)));
        adapter.handle(QByteArray(bytes.data(), qsizetype(end)));
        ++messages;
        bytes.remove_prefix(std::min(end + 1, bytes.size()));
    }
    if (answers.count < messages)
        abort(); // one was not answered
    return 0;
}

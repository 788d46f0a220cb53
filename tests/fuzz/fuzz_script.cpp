// Any bytes as source text must end in a value or a message, and leave the context usable. A script may run
// for a bounded number of instructions.
#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESStringPool.h"
#include "script/native/ESLibrary.h"

#include <memory>

namespace {

class Bounded : public ESContext {
public:
    bool carryOnExecuting() override { return --left > 0; }
    int left = 0;
};

// Making a context takes longer than most inputs, so some share one; a finding that needs its forerunners
// is replayed with all of them.
constexpr int InputsForContext = 64;
std::unique_ptr<Bounded> shared;
int inputs = 0;

void evaluate(Bounded& context, const QString& source, int instructions)
{
    context.left = instructions;
    try {
        ESCompletion completion = context.eval(source);
        context.toString(completion.value, 10);
    } catch (const ESException&) {
    } catch (const ESFatalError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 2048)
        return 0;
    if (!shared || ++inputs % InputsForContext == 0) {
        shared.reset();
        // What scripts interned and compiled would stay for the whole run otherwise.
        if (ESStringPool::count() > 20000) {
            ESContext::forgetFunctionCode();
            ESStringPool::clear();
        }
        shared = std::make_unique<Bounded>();
        ESLibrary::mkexec(nullptr, shared.get());
    }
    evaluate(*shared, QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size)), 4000);
    evaluate(*shared, QStringLiteral("(function(a) { return a + 1 })(2)"), 100);
    return 0;
}

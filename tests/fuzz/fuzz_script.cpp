// Any bytes as source text must end in a value or a message. A script may run for a bounded number of
// instructions, and each input gets a context of its own.
#include "script/ESContext.h"

namespace {

class Bounded : public ESContext {
public:
    bool carryOnExecuting() override { return --m_left > 0; }

private:
    int m_left = 20000;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size > 8192)
        return 0;
    {
        Bounded context;
        ESContext::mkexec(nullptr, &context);
        QString source = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
        try {
            ESCompletion completion = context.eval(source);
            context.toString(completion.value, 10);
        } catch (const ESException&) {
        } catch (const ESFatalError&) {
        }
        // The context stays usable.
        try {
            context.eval(QStringLiteral("x = 1; (function(a) { return a + x })(2)"));
        } catch (const ESFatalError&) {
        }
    }
    // What a script interned would stay for the whole run otherwise.
    if (ESStringPool::count() > 20000) {
        ESContext::forgetFunctionCode();
        ESStringPool::clear();
    }
    return 0;
}

#include "maxq30/sim/PeripheralSimulator.h"

#include "script/engine/ESContext.h"
#include "script/host/HostEvaluation.h"
#include "script/host/ScriptSystem.h"
#include "script/native/ESLibrary.h"
#include "script/native/ESNativeGlobal.h"
#include "support/HException.h"
#include "support/Numbers.h"
#include "support/QTx.h"
#include "target/TargetInterface.h"

#include <QFileInfo>

#include <cmath>

namespace {

// A request to stop the tool's scripts stops these as well.
class PeripheralContext : public ESContext {
public:
    PeripheralContext() : ESContext(Ask::NowAndThen) {}
    bool carryOnExecuting() override { return !(scriptSystem && scriptSystem->stopRequested()); }
};

} // namespace

PeripheralSimulator::PeripheralSimulator(const QString& fileName, TargetInterface* target)
    : m_context(std::make_unique<PeripheralContext>()), m_fileName(QFileInfo(fileName).fileName())
{
    ESLibrary::mkexec(nullptr, m_context.get());
    install(m_context.get(), 0, nullptr);
    target->installScriptObject(m_context.get());
    std::optional<QString> text = QTx::readText(fileName);
    if (!text)
        return;
    ESNativeGlobal::of(m_context.get())->addToLoadPath(QFileInfo(fileName).absolutePath());
    executeJavaScript(*text + QLatin1Char('\n'));
}

PeripheralSimulator::~PeripheralSimulator() = default;

int PeripheralSimulator::reset()
{
    return executeJavaScript(QStringLiteral("reset()\n"));
}

int PeripheralSimulator::connect(const QString& name)
{
    return executeJavaScript(QLatin1String("connect(\"") + name + QLatin1String("\")\n"));
}

int PeripheralSimulator::loadPeripheral(unsigned address, unsigned size, bool flag)
{
    return executeJavaScript(QStringLiteral("loadPeripheral(%1, %2, %3)\n")
                                 .arg(toHexString(address), toHexString(size), flag ? "true" : "false"));
}

int PeripheralSimulator::storePeripheral(unsigned address, unsigned size, unsigned value)
{
    return executeJavaScript(QStringLiteral("storePeripheral(%1, %2, %3)\n")
                                 .arg(toHexString(address), toHexString(size), toHexString(value)));
}

int PeripheralSimulator::pollForInterrupts(unsigned requests)
{
    return executeJavaScript(QStringLiteral("pollForInterrupts(%1)\n").arg(toHexString(requests)));
}

int PeripheralSimulator::executeJavaScript(const QString& text)
{
    ESCompletion completion = evaluateForHost(m_context.get(), text, m_fileName);
    if (completion.type == ESCompletion::Thrown) {
        if (m_context->iserrorobj(completion.value))
            throw HException(completion.text);
        throw HException(QLatin1String("Uncaught exception: ") + completion.text);
    }
    double number = completion.value.isNumber() ? completion.value.number() : 0;
    // A register is 32 bits wide, signed or not.
    return std::fabs(number) < 9e15 ? int(uint32_t(int64_t(number))) : 0;
}

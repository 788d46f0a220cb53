// vboard: a virtual board that a program can be downloaded to, through a pseudo-terminal or the library of
// USB calls.
#include "board/Device.h"
#include "board/Journal.h"
#include "board/Link.h"
#include "board/Options.h"
#include "board/PtyServer.h"
#include "board/SerialAdapter.h"
#include "board/Serving.h"
#include "board/UsbAdapter.h"
#include "board/UsbServer.h"
#include "sim/Core.h"

#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <sys/signalfd.h>

using namespace board;

namespace {

int fail(const std::string& text)
{
    std::cerr << "vboard: " << text << std::endl;
    return 1;
}

// Readable when the user, or the system, wants the board to end.
FileDescriptor stopSignals()
{
    signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    for (int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, number);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    FileDescriptor fd(signalfd(-1, &signals, SFD_CLOEXEC));
    if (fd < 0)
        throw ServingError::fromErrno("cannot wait for signals");
    return fd;
}

void announce(const std::string& port)
{
    std::cout << port << std::endl;
    if (!std::cout)
        throw ServingError("cannot write the name of the port");
}

void serve(const Options& options, Device& device, Journal& journal)
{
    FileDescriptor stop = stopSignals();
    if (options.usbSocket.empty()) {
        SerialAdapter adapter(device, journal);
        Link link(device, adapter, journal, options.faults);
        PtyServer server;
        announce(server.portName());
        server.serve(link, device, stop, options.once);
    } else {
        UsbAdapter adapter(device, journal);
        Link link(device, adapter, journal, options.faults);
        UsbServer server(options.usbSocket, options.serialNumber, options.product);
        announce(options.usbSocket);
        server.serve(link, device, stop, options.once);
    }
}

std::string loadImages(const Options& options, maxq30::Core& core)
{
    std::string error;
    for (size_t i = 0; i < options.codeImages.size() && error.empty(); ++i)
        error = loadCode(core, options.codeImages[i]);
    for (size_t i = 0; i < options.dataImages.size() && error.empty(); ++i)
        error = loadData(core, options.dataImages[i]);
    return error;
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (std::string error = options.parse({argv + 1, argv + argc}); !error.empty())
        return fail(error + "; see vboard --help");
    if (options.help) {
        std::cout << Options::helpText() << std::flush;
        return std::cout ? 0 : 1;
    }

    Journal journal(&std::cerr);
    if (!options.log.empty() && !journal.open(options.log))
        return fail("cannot write " + options.log);
    Device device(options.settings, journal);
    if (std::string error = loadImages(options, device.core()); !error.empty())
        return fail(error);

    // What the memories hold is worth keeping however the serving ended.
    int status = 0;
    try {
        serve(options, device, journal);
    } catch (const ServingError& error) {
        status = fail(error.what());
    }
    if (!journal.complaints().empty())
        status = 1;
    for (const std::string& error :
         {options.saveCode.empty() ? std::string() : saveCode(device.core(), options.saveCode),
          options.saveData.empty() ? std::string() : saveData(device.core(), options.saveData)})
        if (!error.empty())
            status = fail(error);
    if (!journal.close())
        status = fail("cannot write " + options.log);
    return status;
}

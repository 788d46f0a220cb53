// A serial port with a scripted adapter at its other end: a pseudo-terminal whose master reads what it
// expects, byte for byte, and writes the answer. Anything else it receives fails the test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace std::string_literals;

class ScriptedPort {
public:
    struct Step {
        std::string expected;
        std::string answer;
        bool hangUp = false; // the cable is pulled once the answer was read
    };

    ScriptedPort() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        grantpt(m_master);
        unlockpt(m_master);
        m_name = ptsname(m_master);
        m_slave = open(name(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    ~ScriptedPort()
    {
        finish();
        hangUp();
        close(m_slave);
    }
    ScriptedPort(const ScriptedPort&) = delete;
    ScriptedPort& operator=(const ScriptedPort&) = delete;

    const char* name() const { return m_name.c_str(); }

    // Serves the steps, from another thread; what is left of earlier ones must be done.
    void play(std::vector<Step> steps)
    {
        finish();
        m_thread = std::thread([this, steps = std::move(steps)] { serve(steps); });
    }
    // The steps are done, and nothing else was sent.
    void finish()
    {
        if (!m_thread.joinable())
            return;
        m_thread.join();
        if (m_master >= 0) {
            EXPECT_EQ(received(1, 0), "") << "bytes that nothing expected";
        }
    }
    void hangUp()
    {
        if (m_master >= 0)
            close(m_master);
        m_master = -1;
    }

    static std::string hex(const std::string& bytes)
    {
        std::string text;
        char two[4];
        for (unsigned char byte : bytes) {
            snprintf(two, sizeof two, "%02x ", byte);
            text += two;
        }
        return text;
    }

private:
    std::string received(size_t count, int milliseconds)
    {
        std::string bytes;
        while (bytes.size() < count) {
            pollfd port = {m_master, POLLIN, 0};
            if (poll(&port, 1, milliseconds) <= 0)
                break;
            char buffer[512];
            ssize_t n = read(m_master, buffer, std::min(sizeof buffer, count - bytes.size()));
            if (n <= 0)
                break;
            bytes.append(buffer, size_t(n));
        }
        return bytes;
    }
    void serve(const std::vector<Step>& steps)
    {
        for (const Step& step : steps) {
            std::string got = received(step.expected.size(), 5000);
            if (got != step.expected) {
                ADD_FAILURE() << "expected " << hex(step.expected) << "\n     got " << hex(got);
                return;
            }
            if (write(m_master, step.answer.data(), step.answer.size()) != ssize_t(step.answer.size()))
                ADD_FAILURE() << "the port took no answer";
            if (step.hangUp) {
                // A hang-up takes unread bytes with it.
                for (int unread = 1; unread > 0 && ioctl(m_slave, FIONREAD, &unread) == 0;)
                    usleep(1000);
                hangUp();
            }
        }
    }

    int m_master;
    int m_slave; // to look at the port from its other side
    std::string m_name;
    std::thread m_thread;
};

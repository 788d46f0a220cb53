// A place for an object that a lower floor asks for and the program, which knows the class behind it,
// installs from above: once, before anybody asks.
#pragma once

#include <cstdio>
#include <cstdlib>

template <class Object> class Installed {
public:
    // The name is told when the object is asked for and nobody has installed it.
    constexpr explicit Installed(const char* name) : m_name(name) {}

    // Not owned; it outlives every use.
    void install(Object& object) { m_object = &object; }
    Object& get() const
    {
        if (!m_object) {
            fprintf(stderr, "assertion failed: %s is not installed\n", m_name);
            abort();
        }
        return *m_object;
    }

private:
    const char* m_name;
    Object* m_object = nullptr;
};

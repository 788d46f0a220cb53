// The end of something that was begun, carried out once on every way out: by end(), which lets its failure
// through, or by the destructor. The destructor swallows a failure, since it runs while another one, which
// is the one to tell, is on its way.
#pragma once

#include <utility>

template <class End> class Bracket {
public:
    // The beginning is the caller's matter: it has happened when this is made.
    explicit Bracket(End end) : m_end(std::move(end)) {}
    ~Bracket()
    {
        if (!m_open)
            return;
        try {
            m_end();
        } catch (...) { // an interrupt, too, must not become a second failure
        }
    }
    Bracket(const Bracket&) = delete;
    Bracket& operator=(const Bracket&) = delete;

    void end()
    {
        if (std::exchange(m_open, false))
            m_end();
    }
    // There is nothing to end any more.
    void dismiss() { m_open = false; }

private:
    End m_end;
    bool m_open = true;
};

#pragma once

namespace Tools::Platform {

// Adaptive spinning: how often it pays to ask for something before sleeping until the system brings
// it. Asking saves two waits for the scheduler while the other side runs on another processor, and
// is in its way on a busy machine; so it is given up step by step while it does not help, and tried
// again at times.
//
// An object has no lock and no atomic: it is used by one thread at a time, whoever holds the block
// on the sender's side, the one that runs the listener on the receiver's.
class Patience {
public:
    constexpr explicit Patience(int most) : m_most(most), m_tries(most) {}

    // How often to ask this time.
    int next()
    {
        constexpr int Rest = 256;
        if (m_tries == 0 && ++m_rested % Rest == 0)
            m_tries = m_most;
        return m_tries;
    }
    void succeeded() { m_tries = m_most; }
    void failed() { m_tries /= 4; }

private:
    int m_most;
    int m_tries;
    unsigned m_rested = 0;
};

}

#include <mdtools/threads.h>

#include "platform/threads.h"

namespace Tools {

// Shared ownership makes copies names of one lock.
CriticalSection::CriticalSection() : m_lock(Platform::createLock(), Platform::destroyLock) {}

CriticalSection::CriticalSection(const CriticalSection& other) = default;
CriticalSection& CriticalSection::operator=(const CriticalSection& other) = default;
CriticalSection::~CriticalSection() = default;

void CriticalSection::lock()
{
    Platform::enterLock(m_lock.get());
}

bool CriticalSection::tryLock()
{
    return Platform::tryEnterLock(m_lock.get());
}

void CriticalSection::unlock()
{
    Platform::leaveLock(m_lock.get());
}

// Remembers the system's lock, not the section: that may be given another one meanwhile.
CriticalSectionLocker::CriticalSectionLocker(CriticalSection& section)
    : m_lock(section.m_lock.get())
{
    Platform::enterLock(m_lock);
}

CriticalSectionLocker::~CriticalSectionLocker()
{
    Platform::leaveLock(m_lock);
}

}

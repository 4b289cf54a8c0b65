#pragma once
#include <windows.h>

// A Win32 critical section owned by one object.
class CriticalSection
{
public:
    CriticalSection() { InitializeCriticalSection(&section); }
    ~CriticalSection() { DeleteCriticalSection(&section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter() { EnterCriticalSection(&section); }
    void Leave() { LeaveCriticalSection(&section); }

private:
    CRITICAL_SECTION section{};
};

// Holds a critical section for the lifetime of the object.
class CriticalLock
{
public:
    explicit CriticalLock(CriticalSection& section) : held(section) { held.Enter(); }
    ~CriticalLock() { held.Leave(); }
    CriticalLock(const CriticalLock&) = delete;
    CriticalLock& operator=(const CriticalLock&) = delete;

private:
    CriticalSection& held;
};

#include "tools/uidriver/RemoteMemory.h"

#include "tools/uidriver/UiDriver.h"

namespace UiDriver
{

RemoteMemory::RemoteMemory(HWND window, std::size_t size) : size_(size)
{
    DWORD processId = 0;
    GetWindowThreadProcessId(window, &processId);
    if (processId == 0)
        throw Error(L"window " + Describe(window) + L" no longer exists");
    process_ =
        OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, processId);
    if (!process_)
        throw Error(L"cannot open process " + std::to_wstring(processId) + L" of window " +
                    Describe(window) + L" (error " + std::to_wstring(GetLastError()) + L")");
    address_ = VirtualAllocEx(process_, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    if (!address_)
    {
        DWORD error = GetLastError();
        CloseHandle(process_);
        throw Error(L"cannot allocate memory in process " + std::to_wstring(processId) +
                    L" (error " + std::to_wstring(error) + L")");
    }
}

RemoteMemory::~RemoteMemory()
{
    VirtualFreeEx(process_, address_, 0, MEM_RELEASE);
    CloseHandle(process_);
}

void RemoteMemory::Write(const void* data, std::size_t size, std::size_t offset)
{
    SIZE_T done = 0;
    if (offset + size > size_ || !WriteProcessMemory(process_, At(offset), data, size, &done) ||
        done != size)
        throw Error(L"cannot write " + std::to_wstring(size) + L" bytes into the target process");
}

void RemoteMemory::Read(void* data, std::size_t size, std::size_t offset) const
{
    SIZE_T done = 0;
    if (offset + size > size_ || !ReadProcessMemory(process_, At(offset), data, size, &done) ||
        done != size)
        throw Error(L"cannot read " + std::to_wstring(size) + L" bytes from the target process");
}

} // namespace UiDriver

#pragma once
// A block of memory inside the process that owns a window, for the common
// control messages whose parameters are pointers (LVITEMW, TVITEMW, TCITEMW,
// RECT): the structure is written there, the message is sent with the remote
// address, and the answer is read back.
#include <windows.h>

#include <cstddef>

namespace UiDriver
{

class RemoteMemory
{
public:
    RemoteMemory(HWND window, std::size_t size);
    ~RemoteMemory();
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;

    // The address inside the target process, `offset` bytes into the block.
    void* At(std::size_t offset = 0) const { return static_cast<char*>(address_) + offset; }
    LPARAM Param(std::size_t offset = 0) const { return reinterpret_cast<LPARAM>(At(offset)); }

    void Write(const void* data, std::size_t size, std::size_t offset = 0);
    void Read(void* data, std::size_t size, std::size_t offset = 0) const;

    template <class T>
    void Put(const T& value, std::size_t offset = 0)
    {
        Write(&value, sizeof(T), offset);
    }
    template <class T>
    T Get(std::size_t offset = 0) const
    {
        T value{};
        Read(&value, sizeof(T), offset);
        return value;
    }

private:
    HANDLE process_ = nullptr;
    void* address_ = nullptr;
    std::size_t size_ = 0;
};

} // namespace UiDriver

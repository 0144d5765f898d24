#include "framework/File.h"

#include <windows.h>

namespace framework {

namespace {

std::string SystemText(DWORD error) {
    char* text = nullptr;
    DWORD length = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        error, 0, reinterpret_cast<char*>(&text), 0, nullptr);
    std::string result;
    if (length != 0 && text != nullptr) {
        result.assign(text, length);
        while (!result.empty() && (result.back() == '\n' || result.back() == '\r' || result.back() == ' '))
            result.pop_back();
    } else {
        result = "Error " + std::to_string(error);
    }
    if (text != nullptr) LocalFree(text);
    return result;
}

HANDLE AsHandle(void* handle) {
    return static_cast<HANDLE>(handle);
}

}  // namespace

File::~File() {
    Close();
}

File::File(File&& other) noexcept : handle_(other.handle_), position_(other.position_) {
    other.handle_ = nullptr;
    other.position_ = 0;
}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        Close();
        handle_ = other.handle_;
        position_ = other.position_;
        other.handle_ = nullptr;
        other.position_ = 0;
    }
    return *this;
}

bool File::OpenForReading(const std::string& path, std::string& error) {
    Close();
    HANDLE handle = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        error = path + "\n" + SystemText(GetLastError());
        return false;
    }
    handle_ = handle;
    position_ = 0;
    return true;
}

bool File::IsOpen() const {
    return handle_ != nullptr;
}

void File::Close() {
    if (handle_ != nullptr) {
        CloseHandle(AsHandle(handle_));
        handle_ = nullptr;
    }
    position_ = 0;
}

void File::SeekFromStart(int64_t offset) {
    if (handle_ == nullptr) throw FileException("seek on a closed file");
    if (offset < 0) throw FileException("seek before the start of the file");
    // Reads name their position themselves, so a seek costs no system call.
    position_ = offset;
}

size_t File::Read(void* buffer, size_t count) {
    if (handle_ == nullptr) throw FileException("read from a closed file");
    size_t done = 0;
    auto* out = static_cast<unsigned char*>(buffer);
    while (done < count) {
        DWORD want = static_cast<DWORD>(count - done > 0x40000000u ? 0x40000000u : count - done);
        DWORD got = 0;
        OVERLAPPED at = {};
        const uint64_t offset = static_cast<uint64_t>(position_) + done;
        at.Offset = static_cast<DWORD>(offset);
        at.OffsetHigh = static_cast<DWORD>(offset >> 32);
        if (!ReadFile(AsHandle(handle_), out + done, want, &got, &at)) {
            const DWORD error = GetLastError();
            if (error == ERROR_HANDLE_EOF) break;
            throw FileException(SystemText(error));
        }
        if (got == 0) break;
        done += got;
    }
    position_ += static_cast<int64_t>(done);
    return done;
}

int64_t File::Position() const {
    return position_;
}

int64_t File::Length() const {
    if (handle_ == nullptr) throw FileException("length of a closed file");
    LARGE_INTEGER size;
    if (!GetFileSizeEx(AsHandle(handle_), &size)) throw FileException(SystemText(GetLastError()));
    return size.QuadPart;
}

}  // namespace framework

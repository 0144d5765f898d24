#include "framework/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstring>

namespace framework {

namespace {
std::string SystemText(int error) {
    return std::strerror(error);
}
}  // namespace

File::~File() {
    Close();
}

File::File(File&& other) noexcept : fd_(other.fd_), position_(other.position_) {
    other.fd_ = -1;
    other.position_ = 0;
}

File& File::operator=(File&& other) noexcept {
    if (this != &other) {
        Close();
        fd_ = other.fd_;
        position_ = other.position_;
        other.fd_ = -1;
        other.position_ = 0;
    }
    return *this;
}

bool File::OpenForReading(const std::string& path, std::string& error) {
    Close();
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        error = path + "\n" + SystemText(errno);
        return false;
    }
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISDIR(info.st_mode)) {
        ::close(fd);
        error = path + "\n" + SystemText(EISDIR);
        return false;
    }
    fd_ = fd;
    position_ = 0;
    return true;
}

bool File::IsOpen() const {
    return fd_ >= 0;
}

void File::Close() {
    if (fd_ >= 0) {
        ::close(fd_);
        fd_ = -1;
    }
    position_ = 0;
}

void File::SeekFromStart(int64_t offset) {
    if (fd_ < 0) throw FileException("seek on a closed file");
    if (offset < 0) throw FileException("seek before the start of the file");
    // Reads name their position themselves, so a seek costs no system call.
    position_ = offset;
}

size_t File::Read(void* buffer, size_t count) {
    if (fd_ < 0) throw FileException("read from a closed file");
    size_t done = 0;
    auto* out = static_cast<unsigned char*>(buffer);
    while (done < count) {
        ssize_t got = ::pread(fd_, out + done, count - done, static_cast<off_t>(position_ + done));
        if (got < 0) {
            if (errno == EINTR) continue;
            throw FileException(SystemText(errno));
        }
        if (got == 0) break;
        done += static_cast<size_t>(got);
    }
    position_ += static_cast<int64_t>(done);
    return done;
}

int64_t File::Position() const {
    return position_;
}

int64_t File::Length() const {
    if (fd_ < 0) throw FileException("length of a closed file");
    struct stat info {};
    if (::fstat(fd_, &info) != 0) throw FileException(SystemText(errno));
    return static_cast<int64_t>(info.st_size);
}

}  // namespace framework

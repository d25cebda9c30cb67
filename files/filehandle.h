#pragma once

/// Owns a file descriptor.
class FileHandle
{
public:
    FileHandle() = default;
    /// Takes what a system call returned; -1 makes a handle that is not open.
    explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
    ~FileHandle();
    FileHandle(FileHandle&& other) noexcept : descriptor_(other.release()) {}
    FileHandle& operator=(FileHandle&& other) noexcept;
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    void reset(int descriptor = -1);
    /// Gives the descriptor away, which the caller then closes.
    int release();
    /// Closes it; false, with errno set, if what was written may not have arrived.
    bool close();

private:
    int descriptor_ = -1;
};

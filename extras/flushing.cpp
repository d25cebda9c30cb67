#include "extras/flushing.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

struct Task {
    FileHandle file;
    Flushing::What what = Flushing::What::File;
    int error = 0;
};

int flushed(const Task& task)
{
    int result = 0;
    switch (task.what) {
    case Flushing::What::Data:
        result = fdatasync(task.file.get());
        break;
    case Flushing::What::File:
        result = fsync(task.file.get());
        break;
    case Flushing::What::FileSystem:
        result = syncfs(task.file.get());
        break;
    }
    return result == 0 || errno == EINVAL ? 0 : errno;
}

} // namespace

struct Flushing::Shared {
    std::vector<Task> tasks; ///< the thread's, from start() until it is done
    std::mutex mutex;
    std::condition_variable ended;
    bool isDone = false;
    bool isLeft = false; ///< nobody wants to know any more
};

Flushing::Flushing() : shared_(std::make_shared<Shared>()) {}

Flushing::~Flushing()
{
    const std::lock_guard lock(shared_->mutex);
    shared_->isLeft = true;
}

void Flushing::add(FileHandle file, What what)
{
    const int error = file.isOpen() ? 0 : errno;
    shared_->tasks.push_back({std::move(file), what, error});
}

void Flushing::start()
{
    if (shared_->tasks.empty()) {
        shared_->isDone = true;
        return;
    }
    try {
        std::thread([shared = shared_] { run(*shared); }).detach();
    } catch (const std::system_error&) {
        run(*shared_);
    }
}

void Flushing::run(Shared& shared)
{
    for (Task& task : shared.tasks) {
        {
            const std::lock_guard lock(shared.mutex);
            if (shared.isLeft)
                return;
        }
        if (task.error == 0)
            task.error = flushed(task);
    }
    const std::lock_guard lock(shared.mutex);
    shared.isDone = true;
    shared.ended.notify_all();
}

bool Flushing::isDone(int milliseconds)
{
    std::unique_lock lock(shared_->mutex);
    return shared_->ended.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                   [this] { return shared_->isDone; });
}

int Flushing::error(size_t number) const
{
    return shared_->tasks[number].error;
}

size_t Flushing::count() const
{
    return shared_->tasks.size();
}

FileHandle sameFile(int descriptor)
{
    return FileHandle(fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
}

#include "players/mpris/track/TimedReads.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace Corvella {

struct TimedReads::Job {
  std::string address;
  std::function<void()> work;
  bool done = false;
  bool givenUp = false;
};

struct TimedReads::Shared {
  std::mutex mutex;                 ///< Guards all that follows.
  std::condition_variable toDo;     ///< For the threads.
  std::condition_variable changed;  ///< For those who wait for a job.
  std::vector<std::shared_ptr<Job>> underWay;
  std::deque<std::shared_ptr<Job>> waiting;  ///< Those of them that no thread has taken up yet.
  std::size_t idleThreads = 0;
  bool ending = false;

  std::shared_ptr<Job> jobAt(const std::string& address) const;
  bool mayStart(const std::string& address) const;
  void serve();
  void perform(std::unique_lock<std::mutex>& lock, Job& job);
};

std::shared_ptr<TimedReads::Job> TimedReads::Shared::jobAt(const std::string& address) const {
  const auto found = std::ranges::find(underWay, address, &Job::address);
  return found == underWay.end() ? nullptr : *found;
}

bool TimedReads::Shared::mayStart(const std::string& address) const {
  const auto stuck = std::ranges::count_if(underWay, [](const auto& job) { return job->givenUp; });
  return static_cast<std::size_t>(stuck) < kMostGivenUp && jobAt(address) == nullptr;
}

/// What a thread does. It ends with the object, or with a read that was given up. Without that,
/// each file that was stuck for a while would leave an idle thread behind.
void TimedReads::Shared::serve() {
  std::unique_lock lock(mutex);
  while (!ending) {
    ++idleThreads;
    toDo.wait(lock, [this] { return ending || !waiting.empty(); });
    --idleThreads;
    if (waiting.empty()) continue;
    const auto job = std::move(waiting.front());
    waiting.pop_front();
    perform(lock, *job);
    if (job->givenUp) return;
  }
}

void TimedReads::Shared::perform(std::unique_lock<std::mutex>& lock, Job& job) {
  lock.unlock();
  try {
    std::exchange(job.work, nullptr)();
  } catch (const std::exception&) {
    // The memory ran out. The caller finds an empty result.
  }
  lock.lock();
  job.done = true;
  std::erase_if(underWay, [&](const auto& other) { return other.get() == &job; });
  changed.notify_all();
}

TimedReads::TimedReads() : shared_(std::make_shared<Shared>()) {}

TimedReads::~TimedReads() {
  const std::scoped_lock lock(shared_->mutex);
  shared_->ending = true;
  shared_->toDo.notify_all();
}

bool TimedReads::run(const std::string& address, Deadline deadline, std::function<void()> work) {
  auto& shared = *shared_;
  std::unique_lock lock(shared.mutex);
  shared.changed.wait_until(lock, deadline, [&] {
    const auto before = shared.jobAt(address);
    return before == nullptr || before->givenUp;
  });
  // A read that starts when its time is over would be given up at once, and its file would be taken
  // for stuck although the file system answers.
  const bool late = std::chrono::steady_clock::now() >= deadline;
  if (late || !shared.mayStart(address)) return false;

  if (shared.idleThreads <= shared.waiting.size()) {
    try {
      // Detached, as nobody may wait for a thread that is stuck.
      std::thread([shared = shared_] { shared->serve(); }).detach();
    } catch (const std::system_error&) {
      return false;  // The system has no thread left, so there is nobody to read.
    }
  }
  const auto job = std::make_shared<Job>(Job{address, std::move(work)});
  shared.underWay.push_back(job);
  shared.waiting.push_back(job);
  shared.toDo.notify_one();
  if (shared.changed.wait_until(lock, deadline, [&] { return job->done; })) return true;
  job->givenUp = true;
  shared.changed.notify_all();
  return false;
}

}  // namespace Corvella

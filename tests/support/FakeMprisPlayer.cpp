#include "tests/support/FakeMprisPlayer.h"

#include <array>
#include <set>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Corvella {

namespace {

constexpr auto kObject = "/org/mpris/MediaPlayer2";
constexpr auto kRoot = "org.mpris.MediaPlayer2";
constexpr auto kPlayer = "org.mpris.MediaPlayer2.Player";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";

std::string interfaceOf(const std::string& property) {
  static const std::set<std::string> ofTheRoot{"CanQuit", "CanRaise", "DesktopEntry",
                                               "HasTrackList", "Identity"};
  return ofTheRoot.contains(property) ? kRoot : kPlayer;
}

/// What a call asks for, up to the value of a Set.
struct Request {
  explicit Request(sd_bus_message* call) : member(sd_bus_message_get_member(call)), name(member) {
    sd_bus_message_rewind(call, 1);
    const auto* of = sd_bus_message_get_interface(call);
    if (of == nullptr || of != std::string(kProperties)) return;
    interface = nextValueAsText(call).value_or("");
    if (member == "GetAll") return;
    property = nextValueAsText(call).value_or("");
    name += " " + property;
  }

  std::string member;
  std::string name;
  std::string interface;
  std::string property;
};

void replyError(sd_bus_message* call, const std::string& name) {
  sd_bus_reply_method_errorf(call, name.c_str(), "As told");
}

void reply(sd_bus_message* call, const FakeMprisPlayer::Value& value) {
  sd_bus_message* message = nullptr;
  checkBus(sd_bus_message_new_method_return(call, &message), "sd_bus_message_new_method_return");
  const BusMessage owned(message);
  value.appendTo(message);
  sd_bus_send(sd_bus_message_get_bus(message), message, nullptr);
}

}  // namespace

using Value = FakeMprisPlayer::Value;

Value Value::container(const std::string& signature, char type, const std::string& contents,
                       std::vector<Value> elements) {
  return {signature, [type, contents, elements = std::move(elements)](sd_bus_message* message) {
            checkBus(sd_bus_message_open_container(message, type, contents.c_str()), "a container");
            for (const auto& element : elements) element.appendTo(message);
            checkBus(sd_bus_message_close_container(message), "a container");
          }};
}

Value Value::texts(const std::vector<std::string>& values) {
  std::vector<Value> elements;
  elements.reserve(values.size());
  for (const auto& value : values) elements.push_back(text(value));
  return array("s", std::move(elements));
}

Value Value::array(const std::string& type, std::vector<Value> elements) {
  return container("a" + type, 'a', type, std::move(elements));
}

Value Value::structure(std::vector<Value> members) {
  std::string contents;
  for (const auto& member : members) contents += member.signature();
  return container("(" + contents + ")", 'r', contents, std::move(members));
}

Value Value::variant(Value value) {
  const auto contents = value.signature();
  return container("v", 'v', contents, {std::move(value)});
}

Value Value::dictionary(const std::vector<std::pair<std::string, Value>>& entries) {
  std::vector<Value> elements;
  elements.reserve(entries.size());
  for (const auto& [key, value] : entries) {
    elements.push_back(container("{sv}", 'e', "sv", {text(key), variant(value)}));
  }
  return array("{sv}", std::move(elements));
}

FakeMprisPlayer::FakeMprisPlayer(std::string address, const std::string& name)
    : address_(std::move(address)),
      busName_(std::string(kRoot) + "." + name),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      properties_{{"Identity", Value::text(name)},
                  {"PlaybackStatus", Value::text("Stopped")},
                  {"Metadata", Value::dictionary({})},
                  {"Position", Value::int64(0)},
                  {"Volume", Value::number(1)}},
      reactions_{{"Play", {{"PlaybackStatus", Value::text("Playing")}}},
                 {"Pause", {{"PlaybackStatus", Value::text("Paused")}}},
                 {"Stop", {{"PlaybackStatus", Value::text("Stopped")}}},
                 {"Next", {}},
                 {"Previous", {}}} {
  for (const std::string can : {"Play", "Pause", "Control", "Seek", "GoNext", "GoPrevious"}) {
    properties_.emplace("Can" + can, Value::boolean(true));
  }
  connect();
  thread_ = std::thread([this] { serve(); });
}

FakeMprisPlayer::~FakeMprisPlayer() {
  {
    const auto lock = control();
    ending_ = true;
  }
  thread_.join();
}

void FakeMprisPlayer::set(const std::string& property, Value value) {
  const auto lock = control();
  textOf(value);
  properties_.insert_or_assign(property, std::move(value));
  errors_.erase("Get " + property);
}

void FakeMprisPlayer::remove(const std::string& property, const std::string& error) {
  const auto lock = control();
  properties_.erase(property);
  errors_["Get " + property] = error;
}

void FakeMprisPlayer::announce(const std::vector<std::string>& properties) {
  const auto lock = control();
  sendChanged(properties);
}

void FakeMprisPlayer::reactTo(const std::string& call, const Properties& changes) {
  const auto lock = control();
  for (const auto& [property, value] : changes) textOf(value);
  reactions_[call] = changes;
}

void FakeMprisPlayer::failWith(const std::string& call, const std::string& error) {
  const auto lock = control();
  errors_[call] = error;
}

void FakeMprisPlayer::hang() {
  const auto lock = control();
  hung_ = true;
}

void FakeMprisPlayer::resume() {
  const auto lock = control();
  hung_ = false;
  for (auto& waiting : waiting_) waiting.due = Clock::now();
  answerWhatIsDue();
}

void FakeMprisPlayer::answerAfter(std::chrono::milliseconds delay) {
  const auto lock = control();
  delay_ = delay;
}

void FakeMprisPlayer::vanishDuring(const std::string& call) {
  const auto lock = control();
  vanishCall_ = call;
}

void FakeMprisPlayer::dropName() {
  const auto lock = control();
  if (bus_) checkBus(sd_bus_release_name(bus_.get(), busName_.c_str()), "sd_bus_release_name");
}

void FakeMprisPlayer::takeName() {
  const auto lock = control();
  if (!bus_) return connect();
  checkBus(sd_bus_request_name(bus_.get(), busName_.c_str(), 0), "sd_bus_request_name");
}

std::vector<std::string> FakeMprisPlayer::calls() {
  const auto lock = control();
  return calls_;
}

void FakeMprisPlayer::forgetCalls() {
  const auto lock = control();
  calls_.clear();
}

std::vector<FakeMprisPlayer::Write> FakeMprisPlayer::writes() {
  const auto lock = control();
  return writes_;
}

std::unique_lock<std::mutex> FakeMprisPlayer::control() {
  std::unique_lock lock(mutex_);
  ::eventfd_write(wake_.number(), 1);
  return lock;
}

void FakeMprisPlayer::serve() {
  std::unique_lock lock(mutex_);
  while (!ending_) {
    processCalls();
    answerWhatIsDue();
    waitForWork(lock);
  }
}

void FakeMprisPlayer::processCalls() {
  int result = 1;
  while (bus_ && result > 0) {
    result = sd_bus_process(bus_.get(), nullptr);
    answerWhatIsDue();
    if (result < 0 || vanishing_) leaveTheBus();
  }
}

void FakeMprisPlayer::waitForWork(std::unique_lock<std::mutex>& lock) {
  std::array<pollfd, 2> files{{{wake_.number(), POLLIN, 0}, {-1, 0, 0}}};
  if (bus_) {
    files[1].fd = sd_bus_get_fd(bus_.get());
    files[1].events = static_cast<short>(sd_bus_get_events(bus_.get()));
  }
  int timeout = -1;
  if (!hung_ && !waiting_.empty()) {
    const auto left = waiting_.front().due - Clock::now();
    const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(left);
    timeout = std::max(0, static_cast<int>(rounded.count()));
  }
  lock.unlock();
  ::poll(files.data(), files.size(), timeout);
  lock.lock();
  eventfd_t count = 0;
  ::eventfd_read(wake_.number(), &count);
}

void FakeMprisPlayer::connect() {
  const auto onCall = [](sd_bus_message* call, void* self, sd_bus_error* /*error*/) {
    static_cast<FakeMprisPlayer*>(self)->receive(call);
    return 1;
  };
  bus_ = connectToBus(address_);
  checkBus(sd_bus_add_object(bus_.get(), nullptr, kObject, onCall, this), "sd_bus_add_object");
  checkBus(sd_bus_request_name(bus_.get(), busName_.c_str(), 0), "sd_bus_request_name");
}

void FakeMprisPlayer::leaveTheBus() {
  vanishing_ = false;
  vanishCall_.clear();
  waiting_.clear();
  bus_.reset();
}

void FakeMprisPlayer::receive(sd_bus_message* call) {
  calls_.push_back(Request(call).name);
  vanishing_ = calls_.back() == vanishCall_;
  if (!vanishing_) {
    waiting_.push_back({BusMessage(sd_bus_message_ref(call)), Clock::now() + delay_});
  }
}

void FakeMprisPlayer::answerWhatIsDue() {
  while (!hung_ && !waiting_.empty() && waiting_.front().due <= Clock::now()) {
    const auto call = std::move(waiting_.front().call);
    waiting_.pop_front();
    answer(call.get());
  }
}

void FakeMprisPlayer::answer(sd_bus_message* call) {
  const Request request(call);
  if (request.member == "Set") return answerSet(call, request.property);
  const auto error = errors_.find(request.name);
  if (error != errors_.end()) return replyError(call, error->second);
  if (request.member == "Get") return answerGet(call, request.property);
  if (request.member == "GetAll") return answerGetAll(call, request.interface);
  answerMethod(call, request.member);
}

void FakeMprisPlayer::answerGet(sd_bus_message* call, const std::string& property) {
  const auto found = properties_.find(property);
  if (found == properties_.end()) return replyError(call, SD_BUS_ERROR_UNKNOWN_PROPERTY);
  reply(call, Value::variant(found->second));
}

void FakeMprisPlayer::answerGetAll(sd_bus_message* call, const std::string& interface) {
  std::vector<std::pair<std::string, Value>> entries;
  for (const auto& property : properties_) {
    if (interfaceOf(property.first) == interface) entries.emplace_back(property);
  }
  reply(call, Value::dictionary(entries));
}

void FakeMprisPlayer::answerSet(sd_bus_message* call, const std::string& property) {
  char type = 0;
  const char* contents = nullptr;
  sd_bus_message_peek_type(call, &type, &contents);
  Write write{property, type == 'v' ? contents : "", ""};
  double number = 0;
  const bool isNumber = write.signature == "d";
  if (isNumber) sd_bus_message_read(call, "v", "d", &number);
  write.text = isNumber ? std::to_string(number) : nextValueAsText(call).value_or("");
  writes_.push_back(write);

  const auto error = errors_.find("Set " + property);
  if (error != errors_.end()) return replyError(call, error->second);
  const auto told = reactions_.find("Set " + property);
  if (told != reactions_.end()) return react(call, told->second);
  if (!properties_.contains(property)) return replyError(call, SD_BUS_ERROR_UNKNOWN_PROPERTY);
  if (!isNumber) return replyError(call, SD_BUS_ERROR_INVALID_ARGS);
  react(call, {{property, Value::number(number)}});
}

void FakeMprisPlayer::answerMethod(sd_bus_message* call, std::string method) {
  const auto status = properties_.find("PlaybackStatus");
  const bool plays = status != properties_.end() && textOf(status->second) == "Playing";
  if (method == "PlayPause" && !reactions_.contains(method)) method = plays ? "Pause" : "Play";
  const auto told = reactions_.find(method);
  if (told == reactions_.end()) return replyError(call, SD_BUS_ERROR_UNKNOWN_METHOD);
  react(call, told->second);
}

void FakeMprisPlayer::react(sd_bus_message* call, const Properties& changes) {
  std::vector<std::string> names;
  names.reserve(changes.size());
  for (const auto& [property, value] : changes) {
    properties_.insert_or_assign(property, value);
    errors_.erase("Get " + property);
    names.push_back(property);
  }
  sd_bus_reply_method_return(call, nullptr);
  if (!names.empty()) sendChanged(names);
}

void FakeMprisPlayer::sendChanged(const std::vector<std::string>& properties) {
  if (!bus_) return;
  std::vector<std::pair<std::string, Value>> changed;
  std::vector<std::string> invalidated;
  for (const auto& name : properties) {
    const auto found = properties_.find(name);
    if (found != properties_.end()) changed.emplace_back(*found);
    if (found == properties_.end()) invalidated.push_back(name);
  }
  sd_bus_message* message = nullptr;
  checkBus(
      sd_bus_message_new_signal(bus_.get(), &message, kObject, kProperties, "PropertiesChanged"),
      "PropertiesChanged");
  const BusMessage owned(message);
  Value::text(kPlayer).appendTo(message);
  Value::dictionary(changed).appendTo(message);
  Value::texts(invalidated).appendTo(message);
  sd_bus_send(bus_.get(), message, nullptr);
}

std::string FakeMprisPlayer::textOf(const Value& value) const {
  if (!bus_) return "";
  sd_bus_message* message = nullptr;
  checkBus(sd_bus_message_new_signal(bus_.get(), &message, kObject, kPlayer, "Value"), "a value");
  const BusMessage owned(message);
  value.appendTo(message);
  checkBus(sd_bus_message_seal(message, 1, 0), "a value");
  return nextValueAsText(message).value_or("");
}

}  // namespace Corvella

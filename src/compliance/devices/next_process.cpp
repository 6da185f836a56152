#include "compliance/devices/next_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

namespace compliance {

namespace {

struct Pipe {
  Pipe() {
    if (pipe(ends) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
  }
  int ends[2];
};

// Understood by the server, which is made of the same program.
struct Request {
  NextProcess::Act act;
  int32_t number;
};

constexpr char End = 0;  // of an answer

void sendAll(int descriptor, std::string_view text) {
  for (size_t sent = 0; sent < text.size();) {
    const ssize_t count = write(descriptor, text.data() + sent, text.size() - sent);
    if (count <= 0) std::_Exit(1);
    sent += static_cast<size_t>(count);
  }
}

// Answers every request, until nobody is left to ask, with what a process of its own reads, and a zero.
[[noreturn]] void serve(int requests, int answers, const std::function<void()>& load) {
  Request request{};
  while (read(requests, &request, sizeof request) == sizeof request) {
    const pid_t reader = fork();
    if (reader == 0) {
      load();
      if (request.act != nullptr) request.act(request.number);
      sendAll(answers, textOf(takeSnapshot()));
      std::exit(0);
    }
    waitpid(reader, nullptr, 0);
    sendAll(answers, {&End, 1});
  }
  std::_Exit(0);
}

}  // namespace

NextProcess::NextProcess(const std::function<void()>& load) {
  const Pipe toServer, fromServer;
  const pid_t server = fork();
  if (server < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (server == 0) {
    close(toServer.ends[1]);
    close(fromServer.ends[0]);
    serve(toServer.ends[0], fromServer.ends[1], load);
  }
  close(toServer.ends[0]);
  close(fromServer.ends[1]);
  requests_ = toServer.ends[1];
  answers_ = fromServer.ends[0];
}

NextProcess::~NextProcess() {
  close(requests_);
  close(answers_);
}

Snapshot NextProcess::look(Act act, int32_t number) const {
  std::string text;
  const Request request{act, number};
  sendAll(requests_, {reinterpret_cast<const char*>(&request), sizeof request});
  char block[4096];
  for (ssize_t count = 0; (count = read(answers_, block, sizeof block)) > 0;) {
    text.append(block, static_cast<size_t>(count));
    if (text.ends_with(End)) break;
  }
  if (!text.empty()) text.pop_back();
  return snapshotOf(text);
}

}  // namespace compliance

#include "compliance/runner.h"

#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>

namespace compliance {

namespace {

const char* running = "start";

void say(const char* text) { static_cast<void>(!write(STDOUT_FILENO, text, std::strlen(text))); }

// Only what is safe within a signal: the crash may have happened anywhere.
extern "C" void reportCrash(int signal) {
  say("FAIL ");
  say(running);
  say(": the library ended the process with SIG");
  say(sigabbrev_np(signal));
  say("; no further check was run\n");
  _exit(1);
}

}  // namespace

Runner::Runner() {
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(signal, reportCrash);
}

void Runner::begin(const char* name) { running = name; }

bool Runner::run(Checks checks, const Bench& bench) {
  const size_t failedBefore = failed_;
  for (const Check& check : checks) {
    begin(check.name);
    Findings findings;
    check.run(bench, findings);
    if (findings.isEmpty())
      printf("ok   %s\n", check.name);
    else
      printf("FAIL %s: %s\n", check.name, findings.summary().c_str());
    std::fflush(stdout);
    ++(findings.isEmpty() ? passed_ : failed_);
  }
  return failed_ == failedBefore;
}

void Runner::runIf(bool wanted, Checks checks, const Bench& bench) {
  if (wanted)
    run(checks, bench);
  else
    left_ += checks.size();
}

void Runner::summarize() const { printf("%zu ok, %zu failed, %zu not run\n", passed_, failed_, left_); }

}  // namespace compliance

// SPDX-License-Identifier: MIT
// How processes reach each other: messages that arrive whole, and from one process in the order in which they were
// sent. One that is lost is lost with its process.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>

namespace koru::parallel {

struct Message {
  int from;
  std::string bytes;
};

class Transport {
 public:
  Transport() = default;
  Transport(const Transport &) = delete;
  Transport &operator=(const Transport &) = delete;
  virtual ~Transport() = default;

  virtual int rank() const = 0;
  virtual int size() const = 0;
  virtual void send(int to, std::string bytes) = 0;
  virtual std::optional<Message> poll() = 0;
  virtual double seconds() const = 0;                          // of a clock that goes on
  virtual void rest() = 0;                                     // there is nothing to do for a while
  virtual void noteLost() = 0;                                 // a process does not answer any more, or may not
  [[noreturn]] virtual void stop(const std::string &why) = 0;  // the whole run, with status 3
};

// What the launcher has made this process a part of.
std::unique_ptr<Transport> connect();

// The messages of one search after the other. A process may have begun the next one while others are still at the last.
class Mail {
 public:
  explicit Mail(Transport &transport) : transport_(transport) {}

  void beginSearch() {
    ++search_;
    messages_ = bytes_ = 0;
  }
  unsigned long long search() const { return search_; }  // the first one is 1
  void send(int to, const std::string &bytes);
  // A message of the present search.
  std::optional<Message> poll();
  // What was sent in the present search.
  long long messages() const { return messages_; }
  long long bytes() const { return bytes_; }

 private:
  Transport &transport_;
  unsigned long long search_ = 0;
  long long messages_ = 0, bytes_ = 0;
  std::deque<Message> early_;  // of searches to come
};

}  // namespace koru::parallel

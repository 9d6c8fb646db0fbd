// SPDX-License-Identifier: MIT
#include "parallel/piece.h"
#include "parallel/transport.h"

namespace koru::parallel {

void Mail::send(int to, const std::string &bytes) {
  Writer out;
  out.number(search_);
  ++messages_;
  bytes_ += static_cast<long long>(out.bytes.size() + bytes.size());
  transport_.send(to, out.bytes + bytes);
}

std::optional<Message> Mail::poll() {
  const auto isMine = [this](Message &m) {
    Reader in(m.bytes);
    if (in.number() != search_) return false;
    m.bytes.erase(0, Writer::lengthOf(search_));
    return true;
  };
  for (auto m = early_.begin(); m != early_.end(); ++m) {
    if (!isMine(*m)) continue;
    Message mine = std::move(*m);
    early_.erase(m);
    return mine;
  }
  while (std::optional<Message> m = transport_.poll()) {
    if (isMine(*m)) return m;
    Reader in(m->bytes);
    if (in.number() > search_) early_.push_back(std::move(*m));
  }
  return std::nullopt;
}

}  // namespace koru::parallel

// SPDX-License-Identifier: MIT
#include <climits>
#include <cstdlib>
#include <string_view>

#include "tree/tree.h"

namespace koru::tree {

namespace {

constexpr std::string_view kMagic = "koru-tree 1\n";

// The first bytes of items; what is below kFirstOther has a number in its lower six bits.
enum {
  kLevel = 128,
  kLeave = 192,
  kSolutionAt = 200,
  kRejectedAt,
  kSolutionWorth,
  kBegin,
  kEnd,
  kRun,
  kMethod,
  kOppositeNext = 212,
  kBy,
  kPlace,
  kName,
  kTime
};

constexpr int kSmall = 63;
constexpr std::uint64_t kManyPlaces = 1000000;

std::int64_t unzigzag(std::uint64_t n) { return static_cast<std::int64_t>(n >> 1) ^ -static_cast<std::int64_t>(n & 1); }

bool isInt(std::int64_t n) { return n >= INT_MIN && n <= INT_MAX; }

class Reader {
 public:
  Reader(std::string_view bytes, Tree &tree) : bytes_(bytes), tree_(tree) {}

  bool read(std::string &error) {
    if (bytes_.substr(0, kMagic.size()) != kMagic) {
      error = "0: this is no record of a search";
      return false;
    }
    at_ = kMagic.size();
    while (at_ < bytes_.size() && !cut_ && fault_ == nullptr) {
      item_ = at_;
      item(byte());
    }
    tree_.cut = cut_;
    if (fault_ != nullptr) error = std::to_string(item_) + ": " + fault_;
    return fault_ == nullptr;
  }

 private:
  struct Level {
    std::int64_t variable = 0;
    std::int64_t first = 0;
    std::int64_t last = 0;
    bool tried = false;
    int parent = -1;  // the node above its decisions
  };
  struct Search {
    std::size_t root;  // levels below it
    int above;         // the node that it runs at
    int node;          // its root's
  };

  // ----- bytes

  int byte() {
    if (at_ < bytes_.size()) return static_cast<unsigned char>(bytes_[at_++]);
    cut_ = true;
    return 0;
  }

  std::uint64_t number() {
    std::uint64_t n = 0;
    for (int shift = 0; shift < 64; shift += 7) {
      const int b = byte();
      n |= static_cast<std::uint64_t>(b & 127) << shift;
      if (b < 128) return n;
    }
    fault_ = "a number that does not end";
    return 0;
  }

  std::int64_t small(int b) {
    const int low = b & kSmall;
    return unzigzag(low < kSmall ? static_cast<std::uint64_t>(low) : kSmall + number());
  }

  std::string text() {
    const std::uint64_t length = number();
    if (length > bytes_.size() - at_) {
      cut_ = true;
      return "";
    }
    const std::string_view all = bytes_.substr(at_, static_cast<std::size_t>(length));
    at_ += all.size();
    return std::string(all);
  }

  bool failed(bool wrong, const char *fault) {
    if (wrong && !cut_ && fault_ == nullptr) fault_ = fault;
    return wrong || cut_ || fault_ != nullptr;
  }

  // ----- items

  void item(int b) {
    if (b < kLevel) return decision(b);
    if (b < kLeave) return level(b);
    if (b < kSolutionAt) return leave(static_cast<std::size_t>(b - kLeave) + 1);
    if (b >= kMethod && b < kOppositeNext) {
      method_ = static_cast<std::uint8_t>(b - kMethod);
      return;
    }
    other(b);
  }

  void other(int b) {
    switch (b) {
      case kSolutionAt:
      case kRejectedAt:
        return solution(b == kSolutionAt, false, 0);
      case kSolutionWorth:
        return solution(true, true, unzigzag(number()));
      case kBegin:
        number();  // which engine
        return begin();
      case kEnd:
        number();  // the status
        return end();
      case kRun:
        return run(number());
      case kOppositeNext:
        opposite_ = true;
        return;
      case kBy:
        return by(number());
      case kPlace:
        return place();
      case kName:
        return name(number());
      case kTime:
        return time(number());
      default:
        fault_ = "an item that is not known";
    }
  }

  void begin() {
    if (cut_ || fault_ != nullptr) return;
    ++tree_.searches;
    searches_.push_back({depth_, node_, -1});
    openRoot(0);
  }

  void openRoot(std::uint64_t kind) {
    Search &search = searches_.back();
    const auto flags = static_cast<std::uint8_t>(kRoot | (kind == 1 ? kNearby : 0));
    search.node = add({search.above, 0, 0, -1, 1, 0, flags});
    node_ = search.node;
    depth_ = search.root;
  }

  // The first run of a search is the one that it begins with.
  void run(std::uint64_t kind) {
    if (failed(searches_.empty(), "a run of no search")) return;
    const bool isFirst = static_cast<std::size_t>(searches_.back().node) + 1 == tree_.nodes.size();
    if (!isFirst) return openRoot(kind);
    if (kind == 1) tree_.nodes.back().flags |= kNearby;
  }

  void end() {
    if (failed(searches_.empty(), "an end of no search")) return;
    depth_ = searches_.back().root;
    node_ = searches_.back().above;
    searches_.pop_back();
  }

  std::size_t base() const { return searches_.empty() ? 0 : searches_.back().root; }

  void level(int b) {
    const std::int64_t change = small(b);
    if (failed(searches_.empty(), "a level of no search")) return;
    if (depth_ == levels_.size()) levels_.emplace_back();
    Level &level = levels_[depth_++];
    if (failed(!isInt(change) || !isInt(level.variable + change) || level.variable + change < -1, "no variable"))
      return;
    level.variable += change;
    level.tried = false;
    level.parent = node_;
  }

  void leave(std::size_t n) {
    if (failed(depth_ - base() < n, "a level is left that is not there")) return;
    depth_ -= n;
    node_ = levels_[depth_].parent;
  }

  void decision(int b) {
    const std::int64_t change = small(b);
    if (failed(depth_ == base(), "a decision without a level")) return;
    Level &level = levels_[depth_ - 1];
    if (failed(change < -(1LL << 34) || change > (1LL << 34), "no value")) return;
    const std::int64_t value = (level.tried ? level.last + 1 : level.first) + change;
    if (failed(!isInt(value), "no value")) return;
    if (!level.tried) level.first = value;
    level.last = value;
    level.tried = true;
    const bool accepted = b >= 64;
    const int flags = (accepted ? kAccepted : 0) | (opposite_ ? kOpposite : 0);
    const int node = add({level.parent, static_cast<int>(level.variable), static_cast<int>(value), accepted ? -1 : by_,
                          1, method_, static_cast<std::uint8_t>(flags)});
    node_ = accepted ? node : level.parent;
    method_ = 0;
    opposite_ = false;
  }

  int add(const Node &node) {
    tree_.nodes.push_back(node);
    return static_cast<int>(tree_.nodes.size()) - 1;
  }

  void solution(bool accepted, bool hasWorth, std::int64_t worth) {
    if (failed(searches_.empty(), "a solution of no search")) return;
    tree_.nodes[static_cast<std::size_t>(node_)].flags |= accepted ? kSolution : kRejected;
    if (accepted) tree_.solutions.push_back({node_, hasWorth, worth, tree_.milliseconds});
  }

  void by(std::uint64_t n) {
    if (failed(n > tree_.places.size(), "a place that was not named")) return;
    by_ = static_cast<int>(n) - 1;
  }

  // Function, then "file, line, ..." separated by tabs.
  void place() {
    Place place;
    place.function = text();
    const std::string where = text();
    if (failed(tree_.places.size() >= kManyPlaces, "too many places")) return;
    const std::size_t tab = where.find('\t');
    place.file = where.substr(0, tab);
    if (tab != where.npos) place.line = std::atoi(where.c_str() + tab + 1);
    tree_.places.push_back(std::move(place));
  }

  void name(std::uint64_t variable) {
    const std::string name = text();
    if (failed(variable > INT_MAX, "no variable")) return;
    tree_.names[static_cast<int>(variable)] = name;
  }

  void time(std::uint64_t milliseconds) {
    if (failed(milliseconds > 1ULL << 40, "no time")) return;
    tree_.milliseconds += static_cast<std::int64_t>(milliseconds);
  }

  std::string_view bytes_;
  Tree &tree_;
  std::size_t at_ = 0;
  std::size_t item_ = 0;  // where the item began
  bool cut_ = false;
  const char *fault_ = nullptr;

  std::vector<Level> levels_;
  std::vector<Search> searches_;
  std::size_t depth_ = 0;
  int node_ = -1;  // where the search stands
  int by_ = -1;
  std::uint8_t method_ = 0;
  bool opposite_ = false;
};

void sumSizes(std::vector<Node> &nodes) {
  for (std::size_t i = nodes.size(); i-- > 0;)
    if (nodes[i].parent >= 0) nodes[static_cast<std::size_t>(nodes[i].parent)].size += nodes[i].size;
}

}  // namespace

bool readTree(const std::string &bytes, Tree &tree, std::string &error) {
  if (bytes.size() > INT_MAX) {
    error = "0: a record of more than 2 GB";
    return false;
  }
  const bool read = Reader(bytes, tree).read(error);
  sumSizes(tree.nodes);
  return read;
}

}  // namespace koru::tree

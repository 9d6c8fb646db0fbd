// SPDX-License-Identifier: MIT
// cs_BinPacking: loads[j] is the sum of the sizes of the items in bin j; bins[i] is the bin of item i, from 0 on.
// Consistency: of each bin by itself, domain of the items and bounds of the load: an item can be there when some of the
// others make one of the loads with it, and can be elsewhere when they make one without it (Shaw, A constraint for bin
// packing, 2004, with the sums themselves in the place of his test). The loads together are the size of all items, and
// the bins hold what is not placed by the bound L2.
// Cost: a run of O(n m) and O(n s / 64) for each bin with s of its greatest load free; once more when it narrows.
// State: none.
// Wakes: at every change.
// Deliberate: in a bin with more space than BinSums has sums for, an item need only fit, and not be missed.
#include <algorithm>

#include "constraints/counting/bin_bound.h"
#include "constraints/counting/bin_sums.h"
#include "constraints/relational/fixpoint.h"
#include "core/domain_walk.h"
#include "koru_extras.h"

namespace koru::counting {

struct BinPacking : Deferred {
  Shared<CSint *> bins;
  int n;
  Shared<CSint *> loads;
  int m;
  Buffer<int> sizes;
  std::int64_t total;
  Buffer<int> candidates;  // items that can be in one bin, and are not there yet
  BinSums sums;
  BinBound bound;

  CSint *bin(int i) const { return bins.get()[i]; }
  CSint *load(int j) const { return loads.get()[j]; }
  std::int64_t size() const { return sizeOf(bins.get(), n) + sizeOf(loads.get(), m); }
};

// The size of the items in a bin, and of those that are or can be.
struct Content {
  int candidates;
  std::int64_t placed;
  std::int64_t possible;
};

static Content contentOf(const BinPacking &c, int j) {
  Content content{0, 0, 0};
  for (int i = 0; i < c.n; ++i) {
    if (!contains(c.bin(i), j)) continue;
    content.possible += c.sizes[i];
    if (isBound(c.bin(i)))
      content.placed += c.sizes[i];
    else
      c.candidates[content.candidates++] = i;
  }
  return content;
}

// ----- rules

static bool keepToBins(const BinPacking &c) {
  return std::all_of(c.bins.get(), c.bins.get() + c.n,
                     [&](CSint *bin) { return narrowMin(bin, 0) && narrowMax(bin, c.m - 1); });
}

static bool narrowLoad(CSint *load, std::int64_t low, std::int64_t high) {
  return narrowMin64(load, low) && narrowMax64(load, high);
}

// All loads together are the size of all items.
static bool narrowByTotal(const BinPacking &c) {
  std::int64_t least = 0;
  std::int64_t most = 0;
  for (int j = 0; j < c.m; ++j) {
    least += c.load(j)->min;
    most += c.load(j)->max;
  }
  for (int j = 0; j < c.m; ++j) {
    CSint *load = c.load(j);
    if (!narrowLoad(load, c.total - (most - load->max), c.total - (least - load->min))) return false;
  }
  return true;
}

// Whether item i can be in bin j, and whether it can be elsewhere.
static bool decide(const BinPacking &c, int i, int j, BinSums::Use use) {
  CSint *bin = c.bin(i);
  if (!use.with && !removeValue(bin, j)) return false;
  return use.without || (contains(bin, j) && bindValue(bin, j));
}

static bool filterByBounds(const BinPacking &c, int j, const Content &content) {
  const CSint *load = c.load(j);
  for (int k = 0; k < content.candidates; ++k) {
    const int i = c.candidates[k];
    const bool with = content.placed + c.sizes[i] <= load->max;
    const bool without = content.possible - c.sizes[i] >= load->min;
    if (!decide(c, i, j, {with, without})) return false;
  }
  return true;
}

static bool filterBySums(BinPacking &c, int j, const Content &content) {
  CSint *load = c.load(j);
  c.sums.start(load->max - content.placed);
  for (int k = 0; k < content.candidates; ++k) c.sums.add(c.sizes[c.candidates[k]]);
  if (!c.sums.meet(load, content.placed)) return false;
  if (!narrowLoad(load, content.placed + c.sums.least(), content.placed + c.sums.greatest())) return false;
  for (int k = content.candidates - 1; k >= 0; --k) {
    const int i = c.candidates[k];
    if (!decide(c, i, j, c.sums.takeBack(c.sizes[i]))) return false;
  }
  return true;
}

static bool filterBin(BinPacking &c, int j) {
  const Content content = contentOf(c, j);
  CSint *load = c.load(j);
  if (!narrowLoad(load, content.placed, content.possible)) return false;
  if (c.sums.reaches(load->max - content.placed)) return filterBySums(c, j, content);
  return filterByBounds(c, j, content);
}

static bool filterBins(BinPacking &c) {
  if (!keepToBins(c)) return false;
  for (int j = 0; j < c.m; ++j)
    if (!filterBin(c, j)) return false;
  return narrowByTotal(c);
}

static bool filter(BinPacking &c) {
  return toFixpoint<BinPacking, filterBins>(c) && c.bound.allows(c.bins.get(), c.sizes.get(), c.loads.get());
}

constexpr auto kTable = deferred<filter>(Rank::kQuadratic);

// ----- posting

// Copies the sizes and adds them up. False when one is negative.
static bool takeSizes(BinPacking &c, const int *sizes) {
  if (!make(c.sizes, static_cast<unsigned>(c.n))) return false;
  for (int i = 0; i < c.n; ++i) {
    if (sizes[i] < 0) return false;
    c.sizes[i] = sizes[i];
    c.total += sizes[i];
  }
  return true;
}

static bool makeSums(BinPacking &c) {
  std::int64_t most = 0;
  for (int j = 0; j < c.m; ++j) most = std::max<std::int64_t>(most, c.load(j)->max);
  c.sums = BinSums(c.n, std::min(most, c.total) + 1);
  return static_cast<bool>(c.sums);
}

static bool post(const Poster &poster, CSint *const *bins, const int *sizes, int n, CSint *const *loads, int m) {
  Posting posting{poster};
  if (!posting) return false;
  BinPacking record{{}, relational::copyOf(bins, n), n, {}, m, {}, 0, {}, {}, {}};
  if (!record.bins || (n > 0 && sizes == nullptr)) return false;
  record.loads = relational::copyOf(loads, m);
  if (!record.loads || !takeSizes(record, sizes) || !make(record.candidates, static_cast<unsigned>(n)) ||
      !makeSums(record))
    return false;
  record.bound = BinBound(record.sizes.get(), n, m);
  if (!record.bound) return false;
  auto c = posting.add(kTable, std::move(record));
  for (int i = 0; posting && i < n; ++i) c.attach(c->bin(i), i);
  for (int j = 0; posting && j < m; ++j) c.attach(c->load(j), n);
  return posting && runSoon(*c);
}

}  // namespace koru::counting

bool cs_BinPacking(CSint **bins, const int *sizes, int n, CSint **loads, int m) {
  return koru::leftOut("cs_BinPacking") || koru::door(koru::counting::post("cs_BinPacking", bins, sizes, n, loads, m));
}

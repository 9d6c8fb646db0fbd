// SPDX-License-Identifier: MIT
#include "constraints/strong/row_set.h"

#include <algorithm>
#include <bit>

#include "core/domain_words.h"

namespace koru {

// ----- building

// Decides how the bits of each value are kept, and where.
class RowSet::Layout {
 public:
  explicit Layout(int wordCount) : wordCount_(wordCount) {}

  // What a row adds to its value: `at` is the last word seen until the place is settled.
  static void see(Place &place, int row) {
    const int word = row / kWordBits;
    if (place.words == 0) place.first = word;
    if (place.words == 0 || place.at != word) ++place.words;
    place.at = word;
  }
  void settle(Column &column, Place &place) {
    if (place.words == 0) return;
    const int span = place.at - place.first + 1;
    const bool isFull = wordCount_ <= kRoom || place.words * std::int64_t{kRoom} >= wordCount_;
    if (isFull) {
      place = {0, 0, wordCount_};
    } else if (span <= kRoom / 2 * std::int64_t{place.words}) {
      place.words = span;
    } else {
      place.first = kSparse;
    }
    column.isPlain = column.isPlain && isFull;
    std::uint64_t &room = place.first == kSparse ? sparse : dense;
    place.at = static_cast<int>(room);
    room += static_cast<unsigned>(place.words);
  }

  std::uint64_t dense = 0;
  std::uint64_t sparse = 0;
  std::uint64_t any = 0;

 private:
  int wordCount_;
};

bool RowSet::buildColumns(RankedRows &rows) {
  Layout layout(wordCount_);
  const auto values = static_cast<unsigned>(rows.valueCount());
  if (!make(places_, values) || !make(residues_, values)) return false;
  std::fill_n(places_.get(), values, Place{0, 0, 0});
  for (int j = 0; j < columnCount_; ++j) {
    const RankedRows::Column &from = rows.column(j);
    Column &column = columns_[j];
    column = {from.v, from.begin, from.ranks, from.isRange, true, 0, nullptr, nullptr};
    int anyWord = -1;
    for (int r = 0; r < rowCount_; ++r) {
      const int rank = rows.ranks(j)[r];
      if (rank != RankedRows::kAnyRank) {
        Layout::see(places_[column.begin + rank], r);
      } else if (r / kWordBits != anyWord) {
        anyWord = r / kWordBits;
        ++layout.any;
        column.isPlain = false;
      }
    }
    for (int at = column.begin; at < column.begin + column.ranks; ++at) layout.settle(column, places_[at]);
  }
  if (layout.dense > kIntMax || !make(dense_, layout.dense) || !make(sparse_, layout.sparse) ||
      !make(anyBits_, layout.any))
    return false;
  std::fill_n(dense_.get(), layout.dense, 0);
  RowBits *anyAt = anyBits_.get();
  for (int j = 0; j < columnCount_; ++j) fillColumn(rows, j, anyAt);
  values_ = rows.takeValues();
  return true;
}

// Adds a row to a list whose last entry is `end[-1]`.
static void addTo(RowBits *begin, RowBits *&end, int row) {
  const int word = row / kWordBits;
  if (end == begin || end[-1].word != word) *end++ = {word, 0};
  end[-1].bits |= std::uint64_t{1} << (row % kWordBits);
}

void RowSet::fillColumn(const RankedRows &rows, int j, RowBits *&anyAt) {
  Column &column = columns_[j];
  column.anyBegin = anyAt;
  for (int at = column.begin; at < column.begin + column.ranks; ++at) residues_[at] = {0, 0};
  for (int r = 0; r < rowCount_; ++r) {
    const int rank = rows.ranks(j)[r];
    if (rank == RankedRows::kAnyRank) {
      addTo(column.anyBegin, anyAt, r);
      continue;
    }
    const Place &place = places_[column.begin + rank];
    if (place.first == kSparse) {
      RowBits *const begin = sparse_.get() + place.at;
      RowBits *end = begin + residues_[column.begin + rank].word;  // as many as there are so far
      addTo(begin, end, r);
      residues_[column.begin + rank].word = static_cast<int>(end - begin);
    } else {
      dense_[place.at + r / kWordBits - place.first] |= std::uint64_t{1} << (r % kWordBits);
    }
  }
  column.anyEnd = anyAt;
  for (int at = column.begin; at < column.begin + column.ranks; ++at) residues_[at] = {0, 0};
}

std::uint64_t RowSet::fullWord(int k) const {
  const int left = rowCount_ - k * kWordBits;
  return left >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << left) - 1;
}

// The values that have rows.
std::uint64_t RowSet::fullFront(const Column &column, int k) const {
  std::uint64_t bits = 0;
  const int end = std::min(column.ranks, (k + 1) * kWordBits);
  for (int rank = k * kWordBits; rank < end; ++rank)
    if (places_[column.begin + rank].words > 0) bits |= std::uint64_t{1} << (rank % kWordBits);
  return bits;
}

// Gives every word its place, and makes what is needed besides.
bool RowSet::start() {
  used_ = wordCount_;
  open_ = used_ + 1;
  openWords_ = wordsFor(columnCount_);
  int words = open_ + openWords_;
  int widest = 0;
  int most = 0;
  for (int j = 0; j < columnCount_; ++j) {
    columns_[j].size = words;
    words += 1 + columns_[j].frontWords();
    widest = std::max(widest, columns_[j].frontWords());
    most = std::max(most, columns_[j].ranks);
  }
  wordsInAll_ = words;
  const auto rowWords = static_cast<unsigned>(wordCount_);
  if (!words_.create(static_cast<unsigned>(words)) || !make(index_, rowWords) || !make(mask_, rowWords) ||
      !make(scratch_, static_cast<unsigned>(widest)) || !make(rows_, static_cast<unsigned>(most)))
    return false;
  for (int k = 0; k < wordCount_; ++k) index_[k] = k;
  fill([this](int i, std::uint64_t bits) { words_.init(i, bits); });
  return true;
}

// What all words are before anything has gone.
template <class Set>
void RowSet::fill(Set set) {
  for (int k = 0; k < wordCount_; ++k) set(k, fullWord(k));
  set(used_, static_cast<unsigned>(wordCount_));
  for (int k = 0; k < openWords_; ++k) {
    const int left = columnCount_ - k * kWordBits;
    set(open_ + k, left >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << left) - 1);
  }
  for (int j = 0; j < columnCount_; ++j) {
    const Column &column = columns_[j];
    int size = 0;
    for (int k = 0; k < column.frontWords(); ++k) {
      const std::uint64_t bits = fullFront(column, k);
      set(column.size + 1 + k, bits);
      size += countOnes(bits);
    }
    set(column.size, static_cast<unsigned>(size));
  }
}

bool RowSet::build(const GivenRows &given) {
  RankedRows rows;
  if (!rows.build(given)) return false;
  columnCount_ = rows.columns();
  rowCount_ = rows.rows();
  wordCount_ = wordsFor(rowCount_);
  return make(columns_, static_cast<unsigned>(columnCount_)) && buildColumns(rows) && start();
}

// ----- updates

template <class Visit>
bool RowSet::visitRows(const Place &p, Visit visit) const {
  if (p.first == kSparse) {
    for (int i = p.at; i < p.at + p.words; ++i)
      if (!visit(sparse_[i].word, sparse_[i].bits)) return false;
  } else if (const int count = used(); count < p.words) {
    for (int i = 0; i < count; ++i) {
      const int word = index_[i];
      if (word >= p.first && word - p.first < p.words && !visit(word, dense_[p.at + word - p.first])) return false;
    }
  } else {
    for (int i = 0; i < p.words; ++i)
      if (!visit(p.first + i, dense_[p.at + i])) return false;
  }
  return true;
}

// Keeps the rows of keep(word), and moves words that are empty then behind those in front.
template <class Keep>
void RowSet::sweep(Keep keep) {
  ReversibleWords::Changes changes = words_.changesNow();
  int *const index = index_.get();
  int left = used();
  for (int i = left - 1; i >= 0; --i) {
    const int word = index[i];
    const std::uint64_t before = changes.words[word];
    const std::uint64_t now = before & keep(word);
    if (now == before) continue;
    changes.set(word, now);
    if (now == 0) std::swap(index[i], index[--left]);
  }
  changes.set(used_, static_cast<unsigned>(left));
  words_.keep(changes);
}

// The bits of all words of each value in scratch_; returns how many these are.
int RowSet::collectRows(const Column &column) {
  int count = 0;
  for (int k = 0; k < column.frontWords(); ++k)
    forEachBit(column.begin + k * kWordBits, scratch_[k],
               [&](int at) { rows_[count++] = dense_.get() + places_[at].at; });
  return count;
}

// Those of values that are not plain, together.
void RowSet::makeMask(const Column &column, bool keeps) {
  for (int i = 0; i < used(); ++i) mask_[index_[i]] = 0;
  if (keeps)
    for (const RowBits *b = column.anyBegin; b != column.anyEnd; ++b) mask_[b->word] |= b->bits;
  const auto add = [this](int word, std::uint64_t bits) {
    mask_[word] |= bits;
    return true;
  };
  for (int k = 0; k < column.frontWords(); ++k)
    forEachBit(column.begin + k * kWordBits, scratch_[k], [&](int at) { visitRows(places_[at], add); });
}

static void addBits(std::uint64_t *to, const std::uint64_t *from, int count) {
  for (int k = 0; k < count; ++k) to[k] |= from[k];
}

// Word by word without an index, in loops that a compiler makes vectors of.
void RowSet::cutFew(const Column &column, bool keeps) {
  const std::uint64_t *mask = mask_.get();
  if (!column.isPlain) {
    makeMask(column, keeps);
  } else if (const int count = collectRows(column); count == 1) {
    mask = rows_[0];
  } else {
    std::fill_n(mask_.get(), wordCount_, 0);
    for (int i = 0; i < count; ++i) addBits(mask_.get(), rows_[i], wordCount_);
  }
  std::uint64_t *const words = words_.held();
  const std::uint64_t flip = keeps ? 0 : ~std::uint64_t{0};
  std::uint64_t any = 0;
  for (int k = 0; k < wordCount_; ++k) any |= words[k] &= mask[k] ^ flip;
  if (any == 0) words_.set(used_, 0);
}

// By the values that have gone, or by those that are left if these are fewer.
void RowSet::cut(const Column &column, bool keeps) {
  if (areFew()) return cutFew(column, keeps);
  const std::uint64_t flip = keeps ? 0 : ~std::uint64_t{0};
  if (!column.isPlain) {
    makeMask(column, keeps);
    return sweep([mask = mask_.get(), flip](int word) { return mask[word] ^ flip; });
  }
  const int count = collectRows(column);
  if (count == 1) return sweep([row = rows_[0], flip](int word) { return row[word] ^ flip; });
  sweep([rows = rows_.get(), count, flip](int word) {
    std::uint64_t bits = 0;
    for (int i = 0; i < count; ++i) bits |= rows[i][word];
    return bits ^ flip;
  });
}

// A run that has failed leaves domains as they are. By the counts of values, which follow the domains unless a context
// has been accepted inside another one.
bool RowSet::lostNothing(const Column &column) const {
  return settled_ && column.v->count == size(column) && !column.hasAny();
}

// Notes the values in front that are not in the domain; returns how many these are.
int RowSet::findGone(const Column &column) {
  const CSint *v = column.v;
  int count = 0;
  for (int k = 0; k < column.frontWords(); ++k) {
    const std::uint64_t bits = front(column, k);
    std::uint64_t gone = 0;
    if (column.isRange) {
      gone = bits & ~domainWord(v, valueAt(column, 0) + std::int64_t{k} * kWordBits);
    } else {
      forEachBit(0, bits, [&](int i) {
        if (!contains(v, valueAt(column, k * kWordBits + i))) gone |= std::uint64_t{1} << i;
      });
    }
    scratch_[k] = gone;
    count += countOnes(gone);
  }
  return count;
}

bool RowSet::close(const Column &column) {
  if (!words_.prepare(1)) return false;
  const auto j = static_cast<int>(&column - columns_.get());
  const int k = open_ + j / kWordBits;
  words_.set(k, words_[k] & ~(std::uint64_t{1} << (j % kWordBits)));
  return true;
}

bool RowSet::updateColumn(const Column &column) {
  if (lostNothing(column)) return true;
  const int gone = findGone(column);
  if (gone > 0) {
    ++changed_;
    lastChanged_ = &column;
    if (areFew() && !words_.hold(wordCount_)) return false;
    const int rowWords = areFew() ? 0 : used();
    if (!words_.prepare(static_cast<unsigned>(rowWords) + static_cast<unsigned>(column.frontWords()) + 2)) return false;
    const int left = size(column) - gone;
    const bool keeps = left < gone;
    for (int k = 0; k < column.frontWords(); ++k) {
      const std::uint64_t bits = front(column, k) & ~scratch_[k];
      if (scratch_[k] != 0) words_.set(column.size + 1 + k, bits);
      if (keeps) scratch_[k] = bits;
    }
    words_.set(column.size, static_cast<unsigned>(left));
    cut(column, keeps);
  }
  return !isBound(column.v) || close(column);
}

bool RowSet::reset() {
  if (!words_.prepare(static_cast<unsigned>(wordsInAll_))) return false;
  fill([this](int i, std::uint64_t bits) { words_.set(i, bits); });
  return true;
}

bool RowSet::update() {
  words_.begin();
  const bool anew = fresh_ || !seen_.kept();
  if (anew && !fresh_ && !reset()) return false;
  settled_ = settled_ && !anew && !solver::acceptedInside;
  changed_ = anew ? columnCount_ + 1 : 0;
  const bool done = forEachOpen([this](const Column &column) { return updateColumn(column); });
  settled_ = false;  // until the run is through
  return done;
}

// ----- questions

bool RowSet::isInFront(const Column &column, int value) const {
  const int *begin = values_.get() + column.begin;
  const int *end = begin + column.ranks;
  const int *found = std::lower_bound(begin, end, value);
  if (found == end || *found != value) return false;
  const auto rank = static_cast<int>(found - begin);
  return (front(column, rank / kWordBits) >> (rank % kWordBits) & 1) != 0;
}

int RowSet::lowestInFront(const Column &column) const {
  int k = 0;
  while (front(column, k) == 0) ++k;
  return valueAt(column, k * kWordBits + std::countr_zero(front(column, k)));
}

int RowSet::highestInFront(const Column &column) const {
  int k = column.frontWords() - 1;
  while (front(column, k) == 0) --k;
  return valueAt(column, k * kWordBits + 63 - std::countl_zero(front(column, k)));
}

bool RowSet::anySupported(const Column &column) const {
  for (const RowBits *b = column.anyBegin; b != column.anyEnd; ++b)
    if ((words_[b->word] & b->bits) != 0) return true;
  return false;
}

// The first word in which both have a bit; `count` without one. By twos, which saves a jump for each.
static int firstInBoth(const std::uint64_t *a, const std::uint64_t *b, int count) {
  int k = 0;
  while (k + 1 < count && ((a[k] & b[k]) | (a[k + 1] & b[k + 1])) == 0) k += 2;
  while (k < count && (a[k] & b[k]) == 0) ++k;
  return k;
}

bool RowSet::findSupport(const Column &column, int at) {
  const Place &place = places_[at];
  const auto isLast = [this, at](int word, std::uint64_t bits) {
    if ((words_[word] & bits) == 0) return true;
    residues_[at] = {word, bits};
    return false;
  };
  if (!column.isPlain) return !visitRows(place, isLast);
  const std::uint64_t *const bits = dense_.get() + place.at;
  if (areFew()) {
    const int k = firstInBoth(words_.from(0), bits, wordCount_);
    return k < wordCount_ && !isLast(k, bits[k]);
  }
  const int count = used();
  for (int i = 0; i < count; ++i)
    if (!isLast(index_[i], bits[index_[i]])) return true;
  return false;
}

bool RowSet::dropUnsupported(const Column &column) {
  const std::uint64_t *const words = words_.from(0);
  const RowBits *const residues = residues_.get();
  int count = 0;
  for (int k = 0; k < column.frontWords(); ++k) {
    std::uint64_t gone = 0;
    for (std::uint64_t left = front(column, k); left != 0; left &= left - 1) {  // inlined once: 2 % of a run
      const int at = column.begin + k * kWordBits + std::countr_zero(left);
      const RowBits &residue = residues[at];
      if ((words[residue.word] & residue.bits) == 0 && !findSupport(column, at)) gone |= left & ~(left - 1);
    }
    scratch_[k] = gone;
    count += countOnes(gone);
  }
  if (count == 0) return true;
  if (!words_.prepare(static_cast<unsigned>(column.frontWords()) + 1)) return false;
  for (int k = 0; k < column.frontWords(); ++k)
    if (scratch_[k] != 0) words_.set(column.size + 1 + k, front(column, k) & ~scratch_[k]);
  words_.set(column.size, static_cast<unsigned>(size(column) - count));
  return true;
}

int RowSet::countRows(const Column &column, int rank) const {
  int rows = 0;
  visitRows(places_[column.begin + rank], [&](int word, std::uint64_t bits) {
    rows += countOnes(words_[word] & bits);
    return true;
  });
  return rows;
}

int RowSet::countRows() const {
  int rows = 0;
  for (int i = 0; i < used(); ++i) rows += countOnes(words_[index_[i]]);
  return rows;
}

}  // namespace koru

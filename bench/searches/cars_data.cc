// SPDX-License-Identifier: MIT
// Car lines from files in the form of CSPLib: comments, of which some name the problem that follows; cars, options and
// classes; capacities, blocks; for each class its number, how many cars, and its options.
#include <algorithm>
#include <bit>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <sstream>
#include <utility>

#include "searches/cars.h"
#include "searches/schedules.h"

namespace koru::bench::searches {

namespace {

using Numbers = std::vector<int>;

constexpr int kUsual[] = {1, 2, 1, 2, 1, 2, 3, 3, 5, 5};  // capacities and blocks where they are left out

// The share of what stations can take that a class asks for.
double scarcity(const CarLine &line, std::size_t of) {
  double sum = 0;
  for (const Station &station : line.stations)
    if (station.has[of] == 1) sum += static_cast<double>(line.demandOf(station)) / station.most(line.cars());
  return sum;
}

void sortClasses(CarLine &line) {
  std::vector<std::size_t> order(line.demands.size());
  std::iota(order.begin(), order.end(), 0U);
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return scarcity(line, a) > scarcity(line, b); });
  const auto sorted = [&](const Numbers &values) {
    Numbers result;
    for (const std::size_t i : order) result.push_back(values[i]);
    return result;
  };
  line.demands = sorted(line.demands);
  for (Station &station : line.stations) station.has = sorted(station.has);
}

// Does nothing when there are too few numbers.
void add(std::vector<CarLine> &lines, const std::string &name, Numbers numbers) {
  if (numbers.size() < 3) return;
  const auto options = static_cast<std::size_t>(numbers[1]);
  const auto classes = static_cast<std::size_t>(numbers[2]);
  if (options == 5 && numbers.size() == 3 + classes * (2 + options))
    numbers.insert(numbers.begin() + 3, std::begin(kUsual), std::end(kUsual));
  if (numbers.size() < 3 + 2 * options + classes * (2 + options)) return;
  CarLine line{name, {}, {}};
  for (std::size_t i = 0; i < options; ++i) line.stations.push_back({numbers[3 + i], numbers[3 + options + i], {}});
  for (std::size_t k = 0; k < classes; ++k) {
    const std::size_t row = 3 + 2 * options + k * (2 + options);
    line.demands.push_back(numbers[row + 1]);
    for (std::size_t i = 0; i < options; ++i) line.stations[i].has.push_back(numbers[row + 2 + i]);
  }
  sortClasses(line);
  lines.push_back(line);
}

std::string nameIn(const std::string &comment) {
  const std::size_t at = comment.find("roblem");
  if (at == std::string::npos) return {};
  const std::size_t from = comment.find_first_not_of(": ", at + 6);
  return from == std::string::npos ? std::string() : comment.substr(from, comment.find_first_of(" \r(", from) - from);
}

void read(std::vector<CarLine> &lines, const std::filesystem::path &path) {
  std::ifstream file(path);
  std::string name;
  Numbers numbers;
  for (std::string text; std::getline(file, text);) {
    if (!text.empty() && text[0] == '#') {
      add(lines, name, std::exchange(numbers, {}));
      if (const std::string next = nameIn(text); !next.empty()) name = next;
    } else if (!text.empty() && std::isdigit(static_cast<unsigned char>(text[0])) != 0) {
      std::istringstream row(text);
      for (int number = 0; row >> number;) numbers.push_back(number);
    }
  }
  add(lines, name, numbers);
}

void readFolder(std::vector<CarLine> &lines, const std::string &folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
    const std::string name = entry.path().stem().string();
    const bool isLine = name.rfind("cars_", 0) == 0 || entry.path().parent_path().filename() == "car_sequencing";
    if (isLine && entry.path().extension() == ".txt") paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  for (const auto &path : paths) read(lines, path);
}

}  // namespace

int CarLine::cars() const { return std::accumulate(demands.begin(), demands.end(), 0); }

int CarLine::demandOf(const Station &station) const {
  return std::inner_product(demands.begin(), demands.end(), station.has.begin(), 0);
}

std::vector<std::vector<int>> statesOf(const Station &station) {
  const unsigned count = 1U << (station.block - 1);
  std::vector<Numbers> next;
  for (unsigned state = 0; state < count; ++state) {
    next.emplace_back();
    for (unsigned has = 0; has < 2; ++has) {
      const bool fits = std::popcount(state) + static_cast<int>(has) <= station.capacity;
      next.back().push_back(fits ? static_cast<int>((2 * state + has) % count) : -1);
    }
  }
  return next;
}

const std::vector<CarLine> &carLines() {
  static const std::vector<CarLine> all = [] {
    std::vector<CarLine> lines;
    readFolder(lines, KORU_EXAMPLE_DATA);
    if (!dataFolder.empty()) readFolder(lines, dataFolder);
    return lines;
  }();
  return all;
}

}  // namespace koru::bench::searches

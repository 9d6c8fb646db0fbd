// SPDX-License-Identifier: MIT
// A computer of one's own: each choice is a context, after which the shop shows what is left; undone, the choice is
// free again. At the end the cheapest computer with the choices that were kept.
#include <iostream>
#include <koru.hpp>
#include <string>
#include <vector>

namespace {

const std::vector<std::string> kParts = {"case", "board", "processor", "graphics", "power"};
const std::vector<std::vector<std::string>> kNames = {{"small", "tower"},
                                                      {"mini", "standard", "server"},
                                                      {"four", "eight", "sixteen"},
                                                      {"none", "card", "twin"},
                                                      {"300 W", "500 W", "800 W"}};
const std::vector<std::vector<int>> kPrices = {{60, 90}, {70, 95, 240}, {110, 210, 520}, {0, 260, 640}, {45, 70, 120}};
const std::vector<std::vector<int>> kWatts = {{0, 0}, {30, 40, 60}, {65, 95, 180}, {0, 170, 340}, {0, 0, 0}};

class Shop {
 public:
  Shop() {
    for (std::size_t p = 0; p < kParts.size(); ++p) {
      parts_.push_back(m_.var(0, static_cast<int>(kNames[p].size()) - 1, kParts[p]));
      costs_.push_back(m_.element(kPrices[p], parts_[p]));
      watts_.push_back(m_.element(kWatts[p], parts_[p]));
    }
    price_ = m_.var(koru::sum(costs_), "price");
    const auto power = m_.element({300, 500, 800}, parts_[4]);
    m_.post(koru::table({parts_[1], parts_[2]}, {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {2, 1}, {2, 2}}));  // sockets
    m_.post((parts_[0] == 0) >> (parts_[1] == 0), (parts_[0] == 0) >> (parts_[3] != 2),
            koru::sum(watts_) + 50 <= power);
  }

  void choose(std::size_t part, int which) {
    choices_.push_back(m_.context());
    const bool fits = m_.post(parts_[part] == which);
    std::cout << kParts[part] << ' ' << kNames[part][static_cast<std::size_t>(which)]
              << (fits ? ":\n" : ": fits nothing\n");
    if (fits)
      show();
    else
      choices_.pop_back();
  }

  void undo() {
    choices_.pop_back();
    std::cout << "undone:\n";
    show();
  }

  void cheapest() {
    const auto r = m_.minimize(price_, {.vars = parts_});
    std::cout << r.status << ", " << r.best[price_] << ':';
    for (std::size_t p = 0; p < parts_.size(); ++p)
      std::cout << ' ' << kNames[p][static_cast<std::size_t>(r.best[parts_[p]])];
    std::cout << '\n';
  }

 private:
  void show() const {
    for (std::size_t p = 0; p < parts_.size(); ++p) {
      std::cout << "  " << kParts[p] << ':';
      for (const int v : parts_[p].domain()) std::cout << ' ' << kNames[p][static_cast<std::size_t>(v)];
      std::cout << '\n';
    }
    std::cout << "  from " << price_.min() << " to " << price_.max() << '\n';
  }

  koru::Model m_;
  std::vector<koru::IntVar> parts_, costs_, watts_;
  koru::IntVar price_;
  std::vector<koru::Context> choices_;
};

}  // namespace

int main() {
  Shop shop;
  shop.choose(3, 2);  // two graphics cards,
  shop.choose(0, 0);  // which the small case does not take
  shop.choose(2, 2);
  shop.undo();
  shop.cheapest();
}

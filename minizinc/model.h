// SPDX-License-Identifier: MIT
// A FlatZinc file in the solver: its variables and its constraints, posted.
#ifndef KORU_MINIZINC_MODEL_H
#define KORU_MINIZINC_MODEL_H

#include "minizinc/postings.h"

namespace koru::fzn {

class Model {
 public:
  // Both outlive the model; a mistake in a constraint goes to `mistake`.
  Model(const Syntax &syntax, Mistake &mistake) : variables(syntax, mistake), syntax_(syntax), mistake_(mistake) {}

  // Constraints that say so define variables, or give one another name; or all are relations of variables that are made
  // before (but those without a domain).
  enum class Definitions { kFollowed, kRelations };

  // Posts everything. False when there is no solution, or with a mistake. The solver runs already.
  bool post(Definitions definitions = Definitions::kFollowed);

  // Those of the solver for all that are declared, once posted, each once.
  Array everyVariable();

  int nbPosted() const { return nbPosted_; }
  // The constraint that is being posted; null between two.
  const Constraint *current() const { return current_; }
  bool isPosting() const { return posting_; }

  Variables variables;

 private:
  struct Step {
    const Row *row = nullptr;  // null for what needs no posting
    Form form = Form::kPlain;
  };

  bool postAll();
  bool look();
  bool check(const Constraint &c, const Row &row, Form form) const;
  bool checkArgument(const Expr &e, char letter) const;
  bool isAlias(const Constraint &c) const;
  void findDefinitions();
  std::vector<std::uint32_t> order() const;
  template <class Visit>
  void forEachVariable(const Constraint &c, Visit visit) const;
  bool postOne(std::uint32_t number);
  bool makeOthers();
  template <class Visit>
  void forEachDeclared(Visit visit);
  bool makeBounded();
  bool isBounded(const Operand &o) const;

  static constexpr std::uint32_t kNone = UINT32_MAX;

  const Syntax &syntax_;
  Mistake &mistake_;
  std::vector<Step> steps_;
  std::vector<std::uint32_t> definition_;  // of a variable, the constraint that makes it
  std::deque<Array> kept_;
  const Constraint *current_ = nullptr;
  int nbPosted_ = 0;
  Definitions definitions_ = Definitions::kFollowed;
  bool posting_ = false;
};

}  // namespace koru::fzn

#endif  // KORU_MINIZINC_MODEL_H

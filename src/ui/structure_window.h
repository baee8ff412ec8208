// The structure view: the members of a structure (a Fortran derived type or a C struct),
// each named as an expression the user could type, so that a member can be printed or
// watched from the view.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/frame_window.h"

namespace vantor::ui {

struct structure_member_row {
  std::string name;
  std::string value;
};

struct structure_contents {
  bool fortran = true;
  std::vector<structure_member_row> members;
  std::string error;  // the evaluator's message when the expression fails
};

// "(%s)%%%s" for a Fortran component, "(%s).%s" for a C member.
std::string member_expression(const std::string& structure, const std::string& member, bool fortran);
// "*(%s)": the structure a pointer points at.
std::string pointer_target_expression(const std::string& pointer);

class structure_window : public frame_window {
 public:
  // The members of the structure the expression names in the frame with that index; the
  // values part supplies it.
  using producer = std::function<void(int frame_index, const std::string& expression, structure_contents& out)>;

  structure_window(producer produce, std::string expression, int frame_index);

  // The expression naming the selected member; "" when none is selected.
  std::string selected_member_expression() const;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  producer produce_;
  structure_contents contents_;
};

}  // namespace vantor::ui

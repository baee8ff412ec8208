// The array view: the elements of an array value, one a row, each with its subscripts in
// the notation of the array's language.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/frame_window.h"

namespace vantor::ui {

struct array_element_row {
  std::vector<long long> subscripts;
  std::string value;
};

struct array_contents {
  bool fortran = true;
  std::vector<array_element_row> elements;
  std::string error;  // the evaluator's message when the expression fails
};

// "[1][2]" in C; "(1,2)" in Fortran, built from "%d," pieces.
std::string subscripts_text(const std::vector<long long>& subscripts, bool fortran);

class array_window : public frame_window {
 public:
  // The elements of the array the expression names in the frame with that index; the
  // values part supplies it.
  using producer = std::function<void(int frame_index, const std::string& expression, array_contents& out)>;

  array_window(producer produce, std::string expression, int frame_index);

  // The element of the selected row; null when none.
  const array_element_row* selected_element() const;

 protected:
  void fill_rows(window_rows& rows) override;

 private:
  producer produce_;
  array_contents contents_;
};

}  // namespace vantor::ui

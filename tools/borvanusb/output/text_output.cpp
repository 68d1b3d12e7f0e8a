#include "output/text_output.h"

#include <string>
#include <utility>

#include "base/format.h"
#include "output/printable.h"

namespace borvanusb {

TextOutput::TextOutput(Sink out, Sink err, TextOutputOptions options)
    : out_(std::move(out)), err_(std::move(err)), options_(options) {}

void TextOutput::Line(std::string_view text) {
  if (!options_.json) {
    out_(Format("{}\n", Printable(text)));
  }
}

void TextOutput::Bytes(std::string_view bytes) {
  if (!options_.json) {
    (options_.bytes ? options_.bytes : out_)(bytes);
  }
}

void TextOutput::JsonLine(std::string_view json) {
  if (options_.json) {
    out_(Format("{}\n", PrintableJson(json)));
  }
}

void TextOutput::Note(std::string_view text) {
  if (!options_.quiet) {
    err_(Format("{}\n", Printable(text)));
  }
}

void TextOutput::Row(std::string_view text) {
  if (!options_.quiet) {
    (options_.rows ? options_.rows : err_)(Format("{}\n", Printable(text)));
  }
}

void TextOutput::Detail(std::string_view text) {
  if (options_.verbose) {
    err_(Format("{}\n", Printable(text)));
  }
}

void TextOutput::Error(std::string_view text) {
  err_(Format("{}\n", Printable(text)));
}

bool TextOutput::TakesResults() const {
  return !options_.takes_results || options_.takes_results();
}

int TextOutput::ErrorColumns() const {
  return options_.columns ? options_.columns() : 0;
}

void TextOutput::MoveUp(int lines) {
  if (options_.move_up) {
    options_.move_up(lines);
  }
}

}  // namespace borvanusb

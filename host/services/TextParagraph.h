#pragma once

#include <QFont>
#include <QString>
#include <QTextLayout>

#include "platform/appkit/NSText.h"

namespace Corvella {

/// One line of a text, laid out: broken between words, or within a word that is wider than the
/// room. What is measured and what is drawn is laid out by this class alone, so that they agree.
/// Any one thread.
class TextParagraph {
 public:
  /// `width` is in pixels; `alignment` moves the text within it, and changes no size.
  TextParagraph(const QString& text, const QFont& font, double width,
                NSTextAlignment alignment = NSTextAlignmentLeft);

  /// In whole pixels.
  double height() const { return height_; }
  double naturalWidth() const;
  /// Its top left corner is 0, 0.
  const QTextLayout& layout() const { return layout_; }

 private:
  QTextLayout layout_;
  double height_ = 0;
};

}  // namespace Corvella

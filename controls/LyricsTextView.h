#pragma once

#include <memory>
#include <optional>

#include "platform/appkit/NSTextView.h"
#include "platform/foundation/NSCoder.h"

namespace Corvella {

/// The text of the lyrics panel. It can tell how high its text is, and says that its natural size
/// may have changed whenever the text does. Owned by the widget's controller. Lives on the main
/// queue.
class LyricsTextView : public NSTextView {
 public:
  LyricsTextView();
  /// `container` may be null.
  LyricsTextView(NSRect frame, std::shared_ptr<NSTextContainer> container);
  explicit LyricsTextView(const NSCoder& coder);

  /// The height in points of the whole text, laid out anew if need be, without a margin. Absent
  /// without a layout manager or a text container.
  virtual std::optional<double> textHeight() const;

  void didChangeText() override;
};

}  // namespace Corvella

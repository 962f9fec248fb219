#pragma once

/// The room in which a text is laid out: a column without an end. Shared by a text view and its
/// layout manager. Lives on the main queue.
class NSTextContainer {
 public:
  /// `width` is in points.
  explicit NSTextContainer(double width = 0) { setWidth(width); }

  double width() const { return width_; }
  /// NaN and what is below zero become zero.
  void setWidth(double width) { width_ = width > 0 ? width : 0; }

  /// Whether the width follows that of the text view.
  bool widthTracksTextView() const { return widthTracksTextView_; }
  void setWidthTracksTextView(bool tracks) { widthTracksTextView_ = tracks; }

 private:
  double width_ = 0;
  bool widthTracksTextView_ = false;
};

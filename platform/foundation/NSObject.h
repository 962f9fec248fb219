#pragma once

/// What an interface file creates or connects: views, cells and view controllers. Never copied,
/// shared by `std::shared_ptr`. Lives on the main queue.
class NSObject {
 public:
  NSObject() = default;
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual ~NSObject();

  /// The interface-file loader calls this once, after every outlet and action of the file has been
  /// connected.
  virtual void awakeFromNib();
};

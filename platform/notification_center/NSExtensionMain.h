#pragma once

#include <memory>

class NSBundle;
class NSClassRegistry;
class NSViewController;

/// Starts the widget extension of `bundle`: makes an object of the principal class that its
/// Info.plist names and loads the object's view. The object is also an `NCWidgetProviding`. Throws
/// `std::runtime_error` that names the file and what is wrong with it, and what loading the view
/// throws. To be called on the main queue.
std::shared_ptr<NSViewController> NSExtensionMain(const NSBundle& bundle,
                                                  const NSClassRegistry& classes);

#pragma once

#include <memory>

#include <pugixml.hpp>

#include "platform/appkit/NSNibDecoder.h"
#include "platform/appkit/NSNibDocument.h"
#include "platform/appkit/NSNibObjects.h"
#include "platform/appkit/NSNibServices.h"
#include "platform/appkit/NSView.h"
#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSClass.h"
#include "platform/foundation/NSCoder.h"
#include "platform/foundation/NSObject.h"

/// Creates the objects of an interface file. For use while the file is loaded.
class NSNibBuilder {
 public:
  /// Both must outlive the builder.
  NSNibBuilder(const NSNibDocument& document, const NSNibServices& services)
      : document_(document), services_(services), decoder_(document, services) {}

  /// `owner` is held against the class that the file names; it is not touched.
  NSNibObjects build(const NSViewController& owner);

 private:
  void readPlaceholder(const pugi::xml_node& node, const NSViewController& owner);
  void checkOwner(const pugi::xml_node& node, const NSViewController& owner) const;
  std::shared_ptr<NSView> buildView(const pugi::xml_node& node, int depth);
  void buildCell(const pugi::xml_node& node, const NSCoder& coder, NSView& view);
  void buildSubviews(const pugi::xml_node& node, NSView& view, int depth);
  std::shared_ptr<NSObject> instantiate(const pugi::xml_node& node, const NSClass& base,
                                        const NSCoder& coder);
  void readConnections(const pugi::xml_node& node, const std::shared_ptr<NSObject>& source);
  void claimId(const pugi::xml_node& node, const std::shared_ptr<NSObject>& object);

  const NSNibDocument& document_;
  const NSNibServices& services_;
  NSNibDecoder decoder_;
  NSNibObjects objects_;
};

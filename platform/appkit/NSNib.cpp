#include "platform/appkit/NSNib.h"

#include <utility>

#include "platform/appkit/NSNibBuilder.h"
#include "platform/appkit/NSNibConnector.h"
#include "platform/appkit/NSNibDocument.h"
#include "platform/appkit/NSViewController.h"

NSNib::NSNib(std::span<const std::byte> bytes, std::string fileName)
    : document_(std::make_unique<const NSNibDocument>(bytes, std::move(fileName))) {}

NSNib::~NSNib() = default;

void NSNib::instantiateWithOwner(NSViewController& owner, const NSNibServices& services) const {
  const NSNibObjects objects = NSNibBuilder(*document_, services).build(owner);
  NSNibConnector(*document_, objects, owner).connect();
  for (const auto& object : objects.created) object->awakeFromNib();
  owner.awakeFromNib();
}

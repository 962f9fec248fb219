#include "platform/appkit/NSNibLoader.h"

#include <stdexcept>
#include <string>

#include "platform/appkit/NSNib.h"
#include "platform/foundation/NSBundle.h"

NSNibLoader::NSNibLoader(const NSBundle& mainBundle, NSNibServices services)
    : mainBundle_(mainBundle), services_(services) {}

void NSNibLoader::instantiate(std::string_view name, const NSBundle* bundle,
                              NSViewController& owner) const {
  const NSBundle& source = bundle ? *bundle : mainBundle_;
  const std::string file = std::string(name) + ".xib";
  const std::string path = source.pathForResource(file).string();
  const auto bytes = source.dataForResource(file);
  if (!bytes) throw std::runtime_error(path + ": the interface file cannot be read");
  NSNib(*bytes, path).instantiateWithOwner(owner, services_);
}

#include "platform/appkit/NSNibLoader.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "platform/appkit/NSButton.h"
#include "platform/appkit/NSImageView.h"
#include "platform/appkit/NSLevelIndicator.h"
#include "platform/appkit/NSProgressIndicator.h"
#include "platform/appkit/NSSlider.h"
#include "platform/appkit/NSTextField.h"
#include "platform/appkit/NSTextView.h"
#include "platform/appkit/NSViewController.h"
#include "platform/foundation/NSBundle.h"
#include "platform/foundation/NSClassRegistry.h"

namespace {

// The ids that Interface Builder gives to what is there before the file is loaded.
constexpr std::string_view firstResponderId = "-1";
constexpr std::string_view ownerId = "-2";
constexpr std::string_view applicationId = "-3";

// Far more than any interface needs; a file that goes deeper must not exhaust the stack.
constexpr int deepestElement = 128;

using Names = std::vector<std::string_view>;
using Object = std::shared_ptr<NSObject>;

/// What the loader knows of an element.
struct Element {
  std::string_view key = {};  ///< The value of its attribute "key"; empty where it has none.
  Names required = {};        ///< Attributes, and keys of elements within it, that it must have.
  Names children = {};        ///< The elements that may be within it.
  /// The class of the object that it stands for, from which a custom class derives.
  std::optional<NSClass> objectClass = {};
};

template <class View>
Element viewWith(Names children, Names required = {"id", "frame"}) {
  children.insert(children.end(), {"rect", "autoresizingMask", "accessibility", "connections"});
  return {{}, std::move(required), std::move(children), NSClass::decoded<View>()};
}

template <class Control>
Element controlWith(std::string_view cell) {
  return viewWith<Control>({cell}, {"id", "frame", "cell"});
}

/// The element of that name, which is among the children of another one, or the nameless one that
/// holds the whole document.
const Element& elementNamed(std::string_view name) {
  static const std::map<std::string_view, Element> elements{
      {"", {.children = {"document"}}},
      {"document", {.children = {"dependencies", "objects"}}},
      {"dependencies", {.children = {"deployment", "plugIn"}}},
      {"deployment", {}},
      {"plugIn", {}},
      {"objects", {.children = {"customObject", "customView"}}},
      {"customObject", {.required = {"id", "customClass"}, .children = {"connections"}}},
      {"connections", {.children = {"outlet", "action"}}},
      {"outlet", {.required = {"id", "property", "destination"}}},
      {"action", {.required = {"id", "selector", "target"}}},
      {"subviews",
       {.children = {"customView", "imageView", "textField", "button", "slider", "levelIndicator",
                     "progressIndicator", "textView"}}},

      {"customView", viewWith<NSView>({"subviews", "point"})},
      {"progressIndicator", viewWith<NSProgressIndicator>({})},
      {"textView", viewWith<NSTextView>({"font", "color"})},
      {"imageView", controlWith<NSImageView>("imageCell")},
      {"textField", controlWith<NSTextField>("textFieldCell")},
      {"button", controlWith<NSButton>("buttonCell")},
      {"slider", controlWith<NSSlider>("sliderCell")},
      {"levelIndicator", controlWith<NSLevelIndicator>("levelIndicatorCell")},

      {"imageCell", {.key = "cell", .children = {"accessibility"}}},
      {"textFieldCell", {.key = "cell", .children = {"font", "color", "accessibility"}}},
      {"buttonCell", {.key = "cell", .children = {"behavior", "font", "accessibility"}}},
      {"sliderCell", {.key = "cell", .children = {"accessibility"}}},
      {"levelIndicatorCell",
       {"cell", {}, {"accessibility"}, NSClass::decoded<NSLevelIndicatorCell>()}},

      {"rect", {.key = "frame", .required = {"x", "y", "width", "height"}}},
      {"autoresizingMask", {.key = "autoresizingMask"}},
      {"font", {.key = "font"}},
      {"color", {.key = "textColor"}},
      {"accessibility", {}},
      {"behavior", {.key = "behavior"}},      // How a button looks while it is pressed.
      {"point", {.key = "canvasLocation"}}};  // Where the editor shows the view.
  return elements.at(name);
}

/// Puts a subview or a cell, the only parts of objects that the table allows, where it belongs.
void join(NSObject& whole, const Object& part) {
  if (const auto view = std::dynamic_pointer_cast<NSView>(part)) {
    return dynamic_cast<NSView&>(whole).addSubview(view);
  }
  dynamic_cast<NSLevelIndicator&>(whole).setCell(
      std::dynamic_pointer_cast<NSLevelIndicatorCell>(part));
}

/// Loads one file for one owner.
class InterfaceFile {
 public:
  InterfaceFile(std::string path, std::span<const std::byte> bytes, NSViewController& owner,
                const NSNibServices& services)
      : path_(std::move(path)), bytes_(bytes), owner_(owner), services_(services) {}

  void load() {
    parse();
    NSCoder coder(path_, services_.textMeasurer, services_.fontFinder);
    read(document_, coder, 0);
    for (const auto& found : document_.select_nodes("//action")) connectAction(found.node());
    for (const char* path : {"//outlet[@property!='view']", "//outlet[@property='view']"}) {
      for (const auto& found : document_.select_nodes(path)) connectOutlet(found.node());
    }
    for (const auto& object : created_) object->awakeFromNib();
    owner_.awakeFromNib();
  }

 private:
  void parse() {
    // Another encoding would be converted first, and offsets would no longer be those of the file.
    const auto parsed = document_.load_buffer(bytes_.data(), bytes_.size(), pugi::parse_default,
                                              pugi::encoding_utf8);
    if (!parsed) throw std::runtime_error(place(parsed.offset) + ": " + parsed.description());
    if (!document_.select_node(
            "/document[@type='com.apple.InterfaceBuilder3.Cocoa.XIB'][@version='3.0']")) {
      const auto root = document_.document_element();
      fail(root, "no interface file of the known type and version", root.name());
    }
  }

  /// Reads the element and all within it into `coder`. Gives the object that the element stands for
  /// or, where it stands for none, the objects within it.
  std::vector<Object> read(const pugi::xml_node& node, NSCoder& coder, int depth) {
    if (depth > deepestElement) fail(node, "elements too deep within each other", node.name());
    for (const auto& attribute : node.attributes()) {
      coder.encodeString(attribute.name(), attribute.value());
    }
    const Element& element = elementNamed(node.name());
    std::vector<Object> parts;
    for (const auto& child : node.children()) {
      std::ranges::move(read(child, addChild(child, element, coder), depth + 1),
                        std::back_inserter(parts));
    }
    for (const auto key : element.required) {
      if (!coder.containsValueForKey(key)) fail(node, "an element without its", key);
    }
    const Object object = makeObject(node, element.objectClass, coder);
    const auto id = node.attribute("id");
    if (id && !byId_.try_emplace(id.value(), object).second) fail(node, "a second id", id.value());
    if (!object) return parts;
    for (const auto& part : parts) join(*object, part);
    return {object};
  }

  /// Gives the coder for an element within another one. Outlets stand under their property there,
  /// so that no property has a second one.
  NSCoder& addChild(const pugi::xml_node& child, const Element& parent, NSCoder& coder) const {
    const std::string_view name = child.name();
    if (std::ranges::find(parent.children, name) == parent.children.end()) {
      // Text between elements has no name, but a value.
      fail(child, "unknown in <" + std::string(child.parent().name()) + ">",
           name.empty() ? child.value() : name);
    }
    std::string key = child.attribute("key").value();
    if (key != elementNamed(name).key) fail(child, "unknown key", key);
    const char* const idOrName = child.attribute("id").as_string(child.name());
    if (key.empty()) key = child.attribute("property").as_string(idOrName);
    if (coder.childForKey(key)) fail(child, "a second", key);
    return coder.encodeChild(key, place(child.offset_debug()));
  }

  /// Null where the element stands for no object of the file.
  Object makeObject(const pugi::xml_node& node, const std::optional<NSClass>& base,
                    const NSCoder& coder) {
    const std::string_view id = node.attribute("id").value();
    const std::string module = node.attribute("customModule").value();
    const std::string name =
        (module.empty() ? module : module + ".") + node.attribute("customClass").value();
    if (!base && (name.empty() || id == firstResponderId || id == applicationId)) return nullptr;
    const NSClass* const made = name.empty() ? &*base : services_.classes.classNamed(name);
    if (!base && id == ownerId && made && made->isKindOfClass(owner_)) return nullptr;
    const Object object =
        base && made && made->initWithCoder ? made->initWithCoder(coder) : nullptr;
    if (!object || !base->isKindOfClass(*object)) fail(node, "no class for the element", name);
    return created_.emplace_back(object);
  }

  void connectAction(const pugi::xml_node& action) const {
    const std::string_view selector = action.attribute("selector").value();
    const std::string_view target = action.attribute("target").value();
    if (target != ownerId) fail(action, "not the owner, so no target", target);
    if (action.next_sibling("action")) fail(action, "one of several actions", selector);
    const auto control =
        std::dynamic_pointer_cast<NSControl>(objectOf(action.parent().parent(), "id"));
    if (!control || !owner_.connectAction(selector, *control)) {
      fail(action, "the owner has no such action for that object", selector);
    }
  }

  void connectOutlet(const pugi::xml_node& outlet) const {
    const std::string_view property = outlet.attribute("property").value();
    if (outlet.parent().parent().attribute("id").value() != ownerId) {
      fail(outlet, "not an outlet of the owner", property);
    }
    const Object object = objectOf(outlet, "destination");
    if (!object) fail(outlet, "no object has the id", outlet.attribute("destination").value());
    if (!owner_.connectOutlet(property, object)) {
      fail(outlet, "the owner has no such outlet for that object", property);
    }
  }

  /// Null where the attribute is no object's id.
  Object objectOf(const pugi::xml_node& node, const char* attribute) const {
    const auto found = byId_.find(node.attribute(attribute).value());
    return found == byId_.end() ? nullptr : found->second;
  }

  [[noreturn]] void fail(const pugi::xml_node& node, const std::string& problem,
                         std::string_view name) const {
    throw std::runtime_error(place(node.offset_debug()) + ": " + problem + " '" +
                             std::string(name) + "'");
  }

  /// "FILE:LINE".
  std::string place(std::ptrdiff_t offset) const {
    const auto before = bytes_.first(static_cast<std::size_t>(offset));
    return path_ + ":" + std::to_string(std::ranges::count(before, std::byte{'\n'}) + 1);
  }

  std::string path_;
  std::span<const std::byte> bytes_;
  NSViewController& owner_;
  const NSNibServices& services_;
  pugi::xml_document document_;
  std::vector<Object> created_;
  std::map<std::string, Object> byId_;  ///< Null for elements that stand for no object.
};

}  // namespace

void NSNibLoader::instantiate(std::string_view name, const NSBundle* bundle,
                              NSViewController& owner) const {
  const NSBundle& source = bundle ? *bundle : mainBundle_;
  const std::string file = std::string(name) + ".xib";
  const std::string path = source.pathForResource(file).string();
  const auto bytes = source.dataForResource(file);
  if (!bytes) throw std::runtime_error(path + ": the interface file cannot be read");
  InterfaceFile(path, *bytes, owner, services_).load();
}

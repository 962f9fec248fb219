#include "platform/foundation/NSObject.h"

NSObject::~NSObject() = default;

void NSObject::awakeFromNib() {}

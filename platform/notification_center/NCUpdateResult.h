#pragma once

/// What a widget tells its host about an update.
enum NCUpdateResult : unsigned {
  NCUpdateResultNewData = 0,
  NCUpdateResultNoData = 1,
  NCUpdateResultFailed = 2,
};

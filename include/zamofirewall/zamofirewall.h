// Everything that the library offers.
#ifndef ZAMOFIREWALL_ZAMOFIREWALL_H
#define ZAMOFIREWALL_ZAMOFIREWALL_H

#include <json/json.h>

#include "zamofirewall/controller.h"
#include "zamofirewall/geoip.h"
#include "zamofirewall/hook.h"
#include "zamofirewall/lockedJson.h"
#include "zamofirewall/modules.h"
#include "zamofirewall/profile.h"
#include "zamofirewall/profileDatabase.h"
#include "zamofirewall/ruleModel.h"
#include "zamofirewall/translator.h"
#include "zamofirewall/zamofirewall_c.h"

#endif

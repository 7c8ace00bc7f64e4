#include "command/report/sections.h"

namespace zamofw::report {

Html mark(Mark sign) {
    switch (sign) {
        case Mark::kAllowed:
            return Html::markup(
                R"(<svg class="mark allowed" aria-hidden="true"><use href="#allowed"/></svg>)");
        case Mark::kPartly:
            return Html::markup(
                R"(<svg class="mark partly" aria-hidden="true"><use href="#partly"/></svg>)");
        case Mark::kDenied:
            return Html::markup(
                R"(<svg class="mark denied" aria-hidden="true"><use href="#denied"/></svg>)");
        case Mark::kNone:
            break;
    }
    return Html::markup(R"(<svg class="mark none" aria-hidden="true"><use href="#none"/></svg>)");
}

// Drawn rather than written: fonts differ in the signs that they have, and printers leave coloured
// backgrounds out.
Html markDrawings() {
    return Html::markup(R"svg(<svg class="drawings" aria-hidden="true">
<symbol id="allowed" viewBox="0 0 16 16"><rect x="1" y="1" width="14" height="14" rx="3" fill="currentColor"/><path d="M4.2 8.4l2.6 2.6 5-5.6" fill="none" class="cut"/></symbol>
<symbol id="partly" viewBox="0 0 16 16"><rect x="1.8" y="1.8" width="12.4" height="12.4" rx="2.4" fill="none" class="line"/><path d="M14 3v9a2 2 0 0 1-2 2H3z" fill="currentColor"/></symbol>
<symbol id="denied" viewBox="0 0 16 16"><path d="M4.5 4.5l7 7M11.5 4.5l-7 7" fill="none" class="line"/></symbol>
<symbol id="none" viewBox="0 0 16 16"><path d="M4 8h8" fill="none" class="line"/></symbol>
</svg>
)svg");
}

}  // namespace zamofw::report

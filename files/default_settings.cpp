#include "files/default_settings.h"

namespace pelagrim {

const std::string_view kDefaultSettingsText =
    R"(# Pelagrim - what to sweep, and how hard to look.
#
# Edit and restart Orvane, or press Rescan on the Plugins row.
#
# start / stop   the band to sweep, in Hz. The sweep moves in slices of
#                the receiver's own bandwidth, overlapped, so nothing
#                falls in the filter roll-off at a slice edge.
start = 144000000
stop  = 146000000
#
# threshold_db   how far above the noise floor a run of bins has to
#                stand before it counts. Lower finds more and invents
#                more; 12 dB is a reasonable start on a quiet aerial.
threshold_db = 12
#
# dwell_seconds  how long to sit on each slice. Longer catches
#                intermittent transmissions - a repeater used twice an
#                hour needs a dwell measured in minutes to be seen at
#                all - at the cost of getting round the band less often.
dwell_seconds = 20
#
# raster_hz      frequencies closer together than this are treated as
#                the same channel. Without it one station becomes a
#                dozen rows a few hundred hertz apart.
raster_hz = 5000
#
# sweep          yes to move across the band, no to stay where the user
#                has tuned and survey only that. Sweeping additionally
#                needs the 'allow tuning' permission on this plugin's
#                row - a plugin cannot grant itself the VFO.
sweep = yes
)";

}  // namespace pelagrim

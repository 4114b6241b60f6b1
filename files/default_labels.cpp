#include "files/default_labels.h"

namespace pelagrim {

const std::string_view kDefaultLabelsText =
    R"(# Pelagrim - what to call a frequency.
#
# >>> FIRST: uncomment the section for YOUR part of the world, below.
#     This plugin cannot tell where it is - the host does not tell a
#     plugin the aerial's position - so it has to be told.
#       Region 1  Europe, Africa, Middle East, northern Asia
#       Region 2  the Americas
#       Region 3  Asia-Pacific, Australia
#
# One range per line:   <low MHz> <high MHz>  <name>
# '#' starts a comment. The FIRST matching line wins, so put narrow
# entries above wide ones to pin a single channel inside a band.
#
# THESE ARE ALLOCATIONS - what a band is set aside for - and not a
# register of who is on it. Naming the actual operator of a channel needs
# somebody's compiled licence data, which is their work and not ours to
# ship. If you have such a list, paste its rows in here; it stays on your
# machine, which is where it belongs.
#
# Edges vary by country even inside a region, and CB / PMR446 / FRS are
# national arrangements rather than ITU ones. Correct these for where you
# are - that is what the file is for.

# ---- worldwide -----------------------------------------------------
  0.4950   0.5050  Distress and calling (500 kHz, historic)
  2.1735   2.1905  Distress and calling (2182 kHz)
 14.0000  14.3500  Amateur 20 m
 21.0000  21.4500  Amateur 15 m
 28.0000  29.7000  Amateur 10 m
108.0000 117.9750  Aeronautical navigation (VOR / ILS)
117.9750 137.0000  Airband, civil AM
137.0000 138.0000  Weather satellite downlink (NOAA APT / Meteor)
156.0000 162.0500  Marine VHF
406.0000 406.1000  Distress beacons - EPIRB / ELT / PLB (never transmit)
1090.000 1090.100  ADS-B aircraft
1575.400 1575.440  GPS L1

# ---- ITU Region 1: Europe, Africa, Middle East ---------------------
  0.1485   0.2835  Longwave broadcast
  0.5265   1.6065  Medium wave broadcast
  1.8100   2.0000  Amateur 160 m
  3.5000   3.8000  Amateur 80 m
  7.0000   7.2000  Amateur 40 m
 26.9650  27.4050  CB 27 MHz
 50.0000  52.0000  Amateur 6 m
 87.5000 108.0000  FM broadcast
144.0000 146.0000  Amateur 2 m
162.0500 174.0000  Land mobile / PMR
430.0000 440.0000  Amateur 70 cm
446.0000 446.2000  PMR446 licence-free

# ---- ITU Region 2: the Americas ------------------------------------
#  0.5350   1.7050  AM broadcast
#  1.8000   2.0000  Amateur 160 m
#  3.5000   4.0000  Amateur 80 m
#  7.0000   7.3000  Amateur 40 m
# 26.9650  27.4050  CB 27 MHz
# 30.0000  50.0000  Land mobile VHF low
# 50.0000  54.0000  Amateur 6 m
# 88.0000 108.0000  FM broadcast
#144.0000 148.0000  Amateur 2 m
#150.8000 162.0000  Land mobile VHF high
#162.4000 162.5500  NOAA weather radio
#420.0000 450.0000  Amateur 70 cm
#462.5500 467.7250  FRS / GMRS
#902.0000 928.0000  ISM / short range devices

# ---- ITU Region 3: Asia-Pacific, Australia -------------------------
#  0.5265   1.6065  Medium wave broadcast
#  1.8000   2.0000  Amateur 160 m
#  3.5000   3.9000  Amateur 80 m
#  7.0000   7.2000  Amateur 40 m
# 26.9650  27.4050  CB 27 MHz
# 50.0000  54.0000  Amateur 6 m
# 76.0000  95.0000  FM broadcast (Japan)
# 87.5000 108.0000  FM broadcast
#144.0000 148.0000  Amateur 2 m
#430.0000 450.0000  Amateur 70 cm
#476.4000 477.4000  UHF CB (Australia / New Zealand)
)";

}  // namespace pelagrim

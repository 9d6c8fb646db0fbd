# SPDX-License-Identifier: MIT
"""Colouring: the sixteen lands of a federation, of which neighbours differ, in as few colours as will do."""
import koru

NEIGHBOURS = {
    "SH": "HH MV NI", "HH": "SH NI", "MV": "SH NI BB", "NI": "SH HH MV BB ST TH HE NW HB", "HB": "NI",
    "BB": "MV NI BE ST SN", "BE": "BB", "ST": "NI BB SN TH", "SN": "BB ST TH BY", "TH": "NI ST SN BY HE",
    "HE": "NI TH BY BW RP NW", "NW": "NI HE RP", "RP": "NW HE BW SL", "SL": "RP", "BW": "HE RP BY", "BY": "SN TH HE BW"}

m = koru.Model()
colour = {land: m.var(0, 5, land) for land in NEIGHBOURS}
m.post(colour[a] != colour[b] for a, others in NEIGHBOURS.items() for b in others.split() if a < b)
# Colours may change places: each but the first is used only after the one before it.
m.post(koru.precede(colour.values(), c, c + 1) for c in range(5))
used = m.max(list(colour.values()))

r = m.minimize(used, list(colour.values()), order=koru.dom_wdeg, then=[koru.Phase([used])])
print(f"{r.status}: {r[used] + 1} colours")
for c in range(r[used] + 1):
    print(f"{c + 1}:", *(land for land, v in colour.items() if r[v] == c))

# Vendor AID of the picture-quality service (user and group "vendor_tavix_tps" in its init file).
# Taken from the OEM range 2900-2999; pick another free value if the device already uses this one.
[AID_VENDOR_TAVIX_TPS]
value: 2951

# Product side: include from the device's product makefile.
PRODUCT_PACKAGES += \
    vendor.tavix.tps-service

# Bring-up client, for engineering builds only.
PRODUCT_PACKAGES_DEBUG += \
    tpsctl

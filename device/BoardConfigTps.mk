# Board side: include from the device's BoardConfig.mk. TPS_DIR is where this project sits in the
# Android tree.
TPS_DIR ?= vendor/tavix/tps

BOARD_VENDOR_SEPOLICY_DIRS += $(TPS_DIR)/sepolicy
DEVICE_FRAMEWORK_COMPATIBILITY_MATRIX_FILE += $(TPS_DIR)/device/compatibility_matrix.xml
# Merged with the device's own list; the file only adds AID_VENDOR_TAVIX_TPS.
TARGET_FS_CONFIG_GEN += $(TPS_DIR)/device/config.fs

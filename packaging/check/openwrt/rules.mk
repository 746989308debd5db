# Stands in for OpenWrt's rules.mk, with Debian's cross compiler.
#   OUT  where everything goes
INCLUDE_DIR = $(TOPDIR)
PKG_BUILD_DIR = $(OUT)/build
PKG_INSTALL_DIR = $(OUT)/build/ipkg-install
STAGING_DIR = $(OUT)/staging
INSTALL_DIR = install -d -m0755
INSTALL_BIN = install -m0755
INSTALL_CONF = install -m0600
CP = cp -fpR
.DEFAULT_GOAL := all

################################################################################
#
# tarvo-ext
#
################################################################################

TARVO_EXT_VERSION = 1.0.10
# The tree that this file is a part of.
TARVO_EXT_SITE = $(BR2_EXTERNAL_TARVO_EXT_PATH)/../..
TARVO_EXT_SITE_METHOD = local
TARVO_EXT_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS = --exclude /build
TARVO_EXT_LICENSE = none granted yet
TARVO_EXT_LICENSE_FILES = debian/copyright
TARVO_EXT_REDISTRIBUTE = NO
TARVO_EXT_INSTALL_STAGING = YES
TARVO_EXT_CONF_OPTS = \
	-DTARVO_BUILD_TOOLS=$(if $(BR2_PACKAGE_TARVO_EXT_TOOLS),ON,OFF) \
	-DTARVO_BUILD_EXAMPLES=$(if $(BR2_PACKAGE_TARVO_EXT_GATEWAY),ON,OFF)

ifeq ($(BR2_PACKAGE_TARVO_EXT_GATEWAY),y)

ifeq ($(BR2_PACKAGE_MOSQUITTO),y)
TARVO_EXT_DEPENDENCIES += host-pkgconf mosquitto
endif

define TARVO_EXT_INSTALL_GATEWAY
	DESTDIR=$(TARGET_DIR) $(BR2_CMAKE) --install $(TARVO_EXT_BUILDDIR) --component Gateway
	$(INSTALL) -D -m 0644 $(@D)/packaging/service/60-tarvo-lines.rules \
		$(TARGET_DIR)/etc/udev/rules.d/60-tarvo-lines.rules
endef
TARVO_EXT_POST_INSTALL_TARGET_HOOKS += TARVO_EXT_INSTALL_GATEWAY

define TARVO_EXT_INSTALL_INIT_SYSV
	$(INSTALL) -D -m 0755 $(@D)/packaging/service/S50gateway \
		$(TARGET_DIR)/etc/init.d/S50gateway
endef

define TARVO_EXT_INSTALL_INIT_SYSTEMD
	$(INSTALL) -D -m 0644 $(@D)/packaging/service/tarvo-gateway.service \
		$(TARGET_DIR)/usr/lib/systemd/system/tarvo-gateway.service
endef

define TARVO_EXT_USERS
	tarvo-gateway -1 tarvo-gateway -1 * - - dialout Meter gateway
endef

endif

$(eval $(cmake-package))

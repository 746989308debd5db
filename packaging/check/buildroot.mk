# Stands in for Buildroot: does with the variables of its manual what the manual says, for one
# package whose source is local.
#   OUT  where everything goes
BR2_PACKAGE_TARVO_EXT = y
BR2_PACKAGE_TARVO_EXT_TOOLS = y
BR2_PACKAGE_TARVO_EXT_GATEWAY = y
BR2_CMAKE = cmake
INSTALL = install
TARGET_DIR = $(OUT)/target
STAGING_DIR = $(OUT)/staging
DIR = $(OUT)/build/tarvo-ext
TARVO_EXT_BUILDDIR = $(DIR)/buildroot-build
.DEFAULT_GOAL := $(DIR)/.stamp_installed
cmake-package =

include $(BR2_EXTERNAL_TARVO_EXT_PATH)/external.mk

ifneq ($(TARVO_EXT_SITE_METHOD) $(TARVO_EXT_INSTALL_STAGING),local YES)
$(error the stand-in knows no other method)
endif
ifneq ($(words $(TARVO_EXT_USERS)) $(word 8,$(TARVO_EXT_USERS)),10 dialout)
$(error not a line of the users' table: $(TARVO_EXT_USERS))
endif

define newline


endef

$(DIR)/.stamp_installed:
	mkdir -p $(TARVO_EXT_BUILDDIR)
	rsync -a --exclude .git $(TARVO_EXT_OVERRIDE_SRCDIR_RSYNC_EXCLUSIONS) $(TARVO_EXT_SITE)/ $(@D)
	cmake -S $(@D) -B $(TARVO_EXT_BUILDDIR) -G Ninja -DCMAKE_TOOLCHAIN_FILE=$(TOOLCHAIN) \
	  -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DBUILD_TESTING=OFF \
	  -DBUILD_SHARED_LIBS=ON -DCMAKE_INSTALL_LIBDIR=lib $(TARVO_EXT_CONF_OPTS) --log-level=WARNING
	cmake --build $(TARVO_EXT_BUILDDIR)
	DESTDIR=$(STAGING_DIR) cmake --install $(TARVO_EXT_BUILDDIR) >/dev/null
	DESTDIR=$(TARGET_DIR) cmake --install $(TARVO_EXT_BUILDDIR) >/dev/null
	$(foreach hook,$(TARVO_EXT_POST_INSTALL_TARGET_HOOKS),$(call $(hook))$(newline))
	$(TARVO_EXT_INSTALL_INIT_SYSV)
	$(TARVO_EXT_INSTALL_INIT_SYSTEMD)
	touch $@

# Stands in for OpenWrt's package.mk: prepares, compiles and installs once, then each package into
# one root. A package must have a title, a section and the packages that it names.
define newline


endef

define BuildPackage
$(foreach field,SECTION CATEGORY TITLE DEPENDS,$(if $(findstring $(field):=,$(Package/$(1))),,$(error $(1) has no $(field))))
all: $(OUT)/$(1).installed
$(OUT)/$(1).installed: $(OUT)/compiled
	$(subst $(newline),$(newline)	,$(call Package/$(1)/install,$(OUT)/root))
	touch $$@
endef

$(OUT)/compiled:
	$(Build/Prepare)
	$(Build/Configure/Default)
	$(Build/Compile/Default)
	$(Build/Install)
	$(call Build/InstallDev,$(STAGING_DIR))
	touch $@

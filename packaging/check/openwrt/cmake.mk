# Stands in for OpenWrt's cmake.mk, with those of its settings that matter to the package.
CMAKE_BINARY_DIR = $(PKG_BUILD_DIR)/openwrt-build

define Build/Configure/Default
	cmake -S $(PKG_BUILD_DIR) -B $(CMAKE_BINARY_DIR) -G Ninja -DCMAKE_TOOLCHAIN_FILE=$(TOOLCHAIN) \
	  -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-DNDEBUG -DCMAKE_CXX_FLAGS=-Os \
	  -DCMAKE_SHARED_LINKER_FLAGS=-Wl,-Bsymbolic-functions -DCMAKE_INSTALL_PREFIX=/usr \
	  -DCMAKE_INSTALL_LIBDIR=lib -DCMAKE_SKIP_RPATH=TRUE $(CMAKE_OPTIONS) --log-level=WARNING
endef

define Build/Compile/Default
	cmake --build $(CMAKE_BINARY_DIR)
endef

define Build/Install/Default
	DESTDIR="$(PKG_INSTALL_DIR)" cmake --install $(CMAKE_BINARY_DIR) >/dev/null
endef

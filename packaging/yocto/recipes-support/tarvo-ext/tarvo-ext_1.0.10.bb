SUMMARY = "Class library for the daemons of small embedded gateways"
# No licence has been granted yet.
LICENSE = "CLOSED"

inherit cmake externalsrc pkgconfig systemd useradd

# The tree that this layer is a part of.
EXTERNALSRC = "${@os.path.normpath(d.getVar('THISDIR') + '/../../../..')}"
EXTERNALSRC_BUILD = "${WORKDIR}/build"

PACKAGECONFIG ??= ""
PACKAGECONFIG[mqtt] = ",,mosquitto"

EXTRA_OECMAKE = "-DBUILD_TESTING=OFF"

do_install:append() {
    DESTDIR='${D}' cmake --install ${B} --component Gateway
    install -D -m 0644 ${S}/packaging/service/tarvo-gateway.service \
        ${D}${systemd_system_unitdir}/tarvo-gateway.service
    install -D -m 0644 ${S}/packaging/service/60-tarvo-lines.rules \
        ${D}${nonarch_base_libdir}/udev/rules.d/60-tarvo-lines.rules
}

PACKAGE_BEFORE_PN = "${PN}-tools ${PN}-gateway"

# The libraries have no version in their names.
SOLIBS = ".so"
FILES_SOLIBSDEV = ""
FILES:${PN}-dev += "${datadir}/gdb"
FILES:${PN}-tools = "${bindir}"
FILES:${PN}-gateway = "${sbindir} ${sysconfdir}/tarvo-gateway ${systemd_system_unitdir} ${nonarch_base_libdir}/udev"
CONFFILES:${PN}-gateway = "${sysconfdir}/tarvo-gateway/gateway.ini"

SYSTEMD_PACKAGES = "${PN}-gateway"
SYSTEMD_SERVICE:${PN}-gateway = "tarvo-gateway.service"
USERADD_PACKAGES = "${PN}-gateway"
USERADD_PARAM:${PN}-gateway = "--system --no-create-home --home-dir /var/lib/tarvo-gateway --user-group --groups dialout tarvo-gateway"

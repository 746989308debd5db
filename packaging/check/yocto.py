"""Does what the recipe says: configure, build, do_install and the split into packages.

It reads the assignments and functions that the recipe uses, and knows of BitBake's own settings
those that matter here.
usage: yocto.py LAYER OUT
"""
import fnmatch
import os
import re
import subprocess
import sys

ASSIGNMENT = re.compile(r'([A-Za-z_]+(?:\[\w+\]|(?::[\w${}-]+)*)) *(\?\?=|\+=|\.=|=) *"(.*)"$')
LIBDIR = '/usr/lib'
BITBAKE = {
    'PN': 'tarvo-ext', 'bindir': '/usr/bin', 'sbindir': '/usr/sbin', 'datadir': '/usr/share',
    'libdir': LIBDIR, 'includedir': '/usr/include', 'sysconfdir': '/etc',
    'nonarch_base_libdir': '/lib', 'systemd_system_unitdir': '/lib/systemd/system',
    'FILES:${PN}-dev': '${includedir} ${FILES_SOLIBSDEV} ${libdir}/pkgconfig ${libdir}/cmake',
    'FILES:${PN}-doc': '${datadir}/doc ${datadir}/man',
    'FILES:${PN}': '${bindir}/* ${sbindir}/* ${libdir}/lib*${SOLIBS} ${sysconfdir}',
    'PACKAGES': '${PN}-dev ${PN}-doc ${PACKAGE_BEFORE_PN} ${PN}',
}
EXPECTED = {
    '/usr/lib/libTarvoExtRelease.so': 'tarvo-ext',
    '/usr/lib/libTarvoRelease.so': 'tarvo-ext',
    '/usr/include/tarvo-ext/KorExport.h': 'tarvo-ext-dev',
    '/usr/lib/cmake/TarvoExt/TarvoExtConfig.cmake': 'tarvo-ext-dev',
    '/usr/bin/inictl.bin': 'tarvo-ext-tools',
    '/usr/sbin/gateway.bin': 'tarvo-ext-gateway',
    '/etc/tarvo-gateway/gateway.ini': 'tarvo-ext-gateway',
    '/lib/systemd/system/tarvo-gateway.service': 'tarvo-ext-gateway',
    '/lib/udev/rules.d/60-tarvo-lines.rules': 'tarvo-ext-gateway',
}


class Recipe:
    """The variables and functions of a file; what it cannot read is an error."""

    def __init__(self, path, variables):
        self.variables = dict(variables, THISDIR=os.path.dirname(path))
        self.functions = {}
        with open(path) as file:
            self.read(file.read().replace('\\\n', ' '))

    def read(self, text):
        function = re.compile(r'^([\w:]+)\(\) \{\n(.*?)^\}\n', re.M | re.S)
        self.functions.update(function.findall(text))
        for line in function.sub('', text).splitlines():
            if line and not line.startswith(('#', 'inherit ')):
                self.assign(*ASSIGNMENT.match(line).groups())

    def assign(self, name, operator, value):
        before = self.variables.get(name, '')
        if operator == '+=':
            value = before + ' ' + value
        elif operator == '.=':
            value = before + value
        self.variables[name] = value

    def getVar(self, name):
        return self.expand(self.variables[name])

    def expand(self, text):
        text = re.sub(r'\$\{@(.*?)\}', lambda code: str(eval(code[1], {'d': self, 'os': os})), text)
        return re.sub(r'\$\{(\w+)\}', lambda name: self.getVar(name[1]), text)


def run(*command):
    subprocess.run(command, check=True)


def package_of(recipe, path):
    """The first package, in their order, one of whose patterns a file or a folder above it fits."""
    for package in recipe.getVar('PACKAGES').split():
        files = recipe.variables.get('FILES:' + package.replace('tarvo-ext', '${PN}', 1), '')
        for pattern in recipe.expand(files).split():
            if fnmatch.fnmatch(path, pattern) or path.startswith(pattern + '/'):
                return package
    return None


def install(recipe):
    source, build, image = (recipe.getVar(name) for name in 'SBD')
    run('cmake', '-S', source, '-B', build, '-G', 'Ninja', '--log-level=WARNING',
        '-DCMAKE_TOOLCHAIN_FILE=' + os.environ['TOOLCHAIN'], '-DCMAKE_INSTALL_PREFIX=/usr',
        '-DCMAKE_INSTALL_LIBDIR=lib', *recipe.getVar('EXTRA_OECMAKE').split())
    run('cmake', '--build', build)
    os.environ['DESTDIR'] = image
    run('cmake', '--install', build)
    run('sh', '-e', '-c', recipe.expand(recipe.functions['do_install:append']))


def main(layer, out):
    conf = Recipe(layer + '/conf/layer.conf', {'LAYERDIR': layer, 'BBPATH': '', 'BBFILES': '',
                                               'BBFILE_COLLECTIONS': ''})
    pattern = conf.getVar('BBFILES').split()[0]
    path = layer + '/recipes-support/tarvo-ext/tarvo-ext_1.0.10.bb'
    assert fnmatch.fnmatch(path, pattern), 'the layer does not find ' + path
    recipe = Recipe(path, dict(BITBAKE, WORKDIR=out, D=out + '/image'))
    recipe.variables['S'] = recipe.getVar('EXTERNALSRC')
    recipe.variables['B'] = recipe.getVar('EXTERNALSRC_BUILD')
    assert os.path.samefile(recipe.getVar('S'), layer + '/../..'), recipe.getVar('S')
    install(recipe)
    packages = {}
    for folder, _, files in os.walk(out + '/image'):
        for name in files:
            installed = os.path.join(folder, name)[len(out + '/image'):]
            packages[installed] = package_of(recipe, installed)
    lost = [name for name, package in packages.items() if package is None]
    assert not lost, 'in no package: %s' % lost
    for name, package in EXPECTED.items():
        assert packages[name] == package, (name, packages.get(name))
    print('%d files in %s' % (len(packages), ', '.join(sorted(set(packages.values())))))


if __name__ == '__main__':
    main(*(os.path.abspath(argument) for argument in sys.argv[1:]))

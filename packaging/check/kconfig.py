"""Reads the options of the Buildroot package as Kconfig and looks at what chooses what."""
import os
import sys
import tempfile

import kconfiglib

NEEDED = ('BR2_USE_MMU', 'BR2_INSTALL_LIBSTDCPP', 'BR2_TOOLCHAIN_HAS_THREADS',
          'BR2_TOOLCHAIN_GCC_AT_LEAST_8')
OURS = ('BR2_PACKAGE_TARVO_EXT', 'BR2_PACKAGE_TARVO_EXT_TOOLS', 'BR2_PACKAGE_TARVO_EXT_GATEWAY')


def choices(folder, given):
    """What can be chosen when the toolchain has what is given."""
    os.environ['BR2_EXTERNAL_TARVO_EXT_PATH'] = folder
    with tempfile.NamedTemporaryFile('w', suffix='.in') as top:
        for name in NEEDED:
            value = 'y' if name in given else 'n'
            top.write('config %s\n\tbool\n\tdefault %s\n\n' % (name, value))
        top.write('source "%s/Config.in"\n' % folder)
        top.flush()
        config = kconfiglib.Kconfig(top.name, warn_to_stderr=False)
    for name in OURS:
        config.syms[name].set_value('y')
    assert not config.warnings, config.warnings
    return [name for name in OURS if config.syms[name].str_value == 'y']


assert choices(sys.argv[1], NEEDED) == list(OURS)
for missing in NEEDED:
    assert not choices(sys.argv[1], [name for name in NEEDED if name != missing]), missing
print('options: all depend on', ', '.join(NEEDED))

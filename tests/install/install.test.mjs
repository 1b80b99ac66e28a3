// What "cmake --install" leaves is a whole player: programs that find their plug-in, a package that a
// plug-in outside the tree is built with, and the files that a system looks for.
import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, readFileSync, realpathSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { House } from '../support/house.mjs';
import { Program } from '../support/program.mjs';

const { TAVU_CMAKE: cmake, TAVU_TREE: tree, TAVU_BUILD: build, TAVU_LIBDIR: libdir } = process.env;
const folder = realpathSync(mkdtempSync(join(tmpdir(), 'tavu-install-')));
const prefix = join(folder, 'prefix');
const installed = (...path) => join(prefix, ...path);
let bus;

function run(program, options, more = {}) {
  const { status, stdout, stderr, error } = spawnSync(program, options, { encoding: 'utf8', ...more });
  assert.ifError(error);
  assert.equal(status, 0, `${program} ${options.join(' ')}\n${stdout}${stderr}`);
  return stdout + stderr;
}

before(async () => {
  run(cmake, ['--install', build, '--prefix', prefix]);
  process.env.TAVU_PLAYER = installed('bin/tavu-player');
  process.env.TAVU_EMULATOR = installed('bin/amazon-music-emulator');
  bus = new Program('dbus-daemon', ['--session', '--nofork', '--nopidfile', '--print-address']);
  process.env.DBUS_SESSION_BUS_ADDRESS = await bus.says((said) => /^unix:\S+/m.exec(said)?.[0]);
});

after(async () => {
  await bus?.stop();
  rmSync(folder, { recursive: true, force: true });
});

/** The files of the prefix and of the build that a process has loaded. */
function loaded({ pid }) {
  const files = readFileSync(`/proc/${pid}/maps`, 'utf8').match(/\/\S+$/gm);
  return [...new Set(files)].filter((file) => file.startsWith(prefix) || file.startsWith(build));
}

test('the installed player finds its plug-in and libraries, and signs in at the emulator', async () => {
  const house = await House.open();
  try {
    assert.ok((await house.rows('')).length > 0);
    const files = loaded(house.player);
    assert.ok(files.includes(installed(libdir, 'tavu/modules/cb_amazonMusic.so')), files.join('\n'));
    assert.deepEqual(files.filter((file) => !file.startsWith(prefix)), []);
    const ctl = run(installed('bin/tavu-ctl'), ['--url', house.url, 'ls']);
    assert.match(ctl, /Albums/);
  } finally {
    await house.close();
  }
});

test('a plug-in outside the tree builds with the package and plays in the player', async () => {
  const radio = join(folder, 'radio');
  run(cmake, ['-S', join(tree, 'examples/radio'), '-B', radio, '-G', 'Ninja',
    `-DCMAKE_PREFIX_PATH=${prefix}`]);
  run(cmake, ['--build', radio]);
  const house = new House({
    'player.plugin': join(radio, 'modules/radio.so'),
    'player.plugin-settings': `playlist=${join(tree, 'examples/radio/stations.m3u')}`,
    'player.mpris': 'true',
  });
  house.settings = () => ({ ...house.more, 'player.state-folder': folder, 'control.port': '0' });
  try {
    await house.startPlayer();
    assert.deepEqual((await house.rows('')).map((row) => row.title), ['The Quiet Hour', 'Harbour Jazz']);
    const entry = run('dbus-send', ['--session', '--print-reply=literal',
      '--dest=org.mpris.MediaPlayer2.tavu', '/org/mpris/MediaPlayer2',
      'org.freedesktop.DBus.Properties.Get',
      'string:org.mpris.MediaPlayer2', 'string:DesktopEntry']).trim().split(/\s+/).at(-1);
    assert.ok(existsSync(installed(`share/applications/${entry}.desktop`)), entry);
  } finally {
    await house.close();
  }
});

test('the desktop file is valid and its icon is there', () => {
  const file = installed('share/applications/tavu-player.desktop');
  assert.equal(run('desktop-file-validate', [file]), '');
  const icon = /^Icon=(.*)$/m.exec(readFileSync(file, 'utf8'))[1];
  assert.ok(existsSync(installed(`share/icons/hicolor/scalable/apps/${icon}.svg`)));
});

for (const manager of ['user', 'system']) {
  test(`the ${manager} unit is valid and starts the installed player`, () => {
    const unit = installed(`lib/systemd/${manager}/tavu-player.service`);
    const env = { ...process.env, XDG_RUNTIME_DIR: folder };
    assert.equal(run('systemd-analyze', [`--${manager}`, 'verify', '--man=no', unit], { env }), '');
    assert.match(readFileSync(unit, 'utf8'), new RegExp(`^ExecStart=${installed('bin/tavu-player')}$`, 'm'));
  });
}

test('man pages, the policy of the system bus and the documents are in their places', () => {
  for (const program of ['tavu-player', 'tavu-ctl', 'amazon-music-emulator']) {
    assert.ok(existsSync(installed('bin', program)));
    assert.match(run('man', ['-l', installed('share/man/man1', `${program}.1`)]), new RegExp(program));
  }
  const policy = readFileSync(installed('share/dbus-1/system.d/org.mpris.MediaPlayer2.tavu.conf'), 'utf8');
  const account = /<policy user="(\w+)">/.exec(policy)[1];
  assert.match(readFileSync(installed('lib/sysusers.d/tavu.conf'), 'utf8'), new RegExp(`^u ${account} `, 'm'));
  assert.match(readFileSync(installed('lib/systemd/system/tavu-player.service'), 'utf8'),
    new RegExp(`^User=${account}$`, 'm'));
  assert.ok(existsSync(installed('share/doc/tavu/settings.md')));
});

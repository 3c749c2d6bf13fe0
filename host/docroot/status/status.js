// The status page: polls /status.json about once a second and updates the page in place. Every text from
// the daemon goes in through textContent, never as markup.
'use strict';

(function () {
  const POLL_MILLISECONDS = 1000;
  const byId = (id) => document.getElementById(id);
  // What each list was last drawn from, so that an unchanged list is not redrawn (no flicker, and a
  // selection in it survives).
  const drawn = {};

  function setText(id, text) {
    const element = byId(id);
    if (element.textContent !== text) element.textContent = text;
  }

  function show(id, visible) {
    byId(id).hidden = !visible;
  }

  function element(tag, text, className) {
    const made = document.createElement(tag);
    if (text !== undefined) made.textContent = text;
    if (className) made.className = className;
    return made;
  }

  // Calls draw(list) when `value` differs from what the list was last drawn from.
  function redraw(id, value, draw) {
    const key = JSON.stringify(value);
    if (drawn[id] === key) return;
    drawn[id] = key;
    const list = byId(id);
    list.replaceChildren();
    draw(list);
  }

  function isWebAddress(uri) {
    return /^https?:\/\//i.test(uri);
  }

  function twoDigits(number) {
    return String(number).padStart(2, '0');
  }

  function clockTime(unixMilliseconds) {
    const date = new Date(unixMilliseconds);
    return twoDigits(date.getHours()) + ':' + twoDigits(date.getMinutes()) + ':' + twoDigits(date.getSeconds());
  }

  function expiry(seconds) {
    if (seconds < 0) return 'never';
    if (seconds < 60) return 'in ' + seconds + ' s';
    return 'in ' + Math.floor(seconds / 60) + ' min ' + (seconds % 60) + ' s';
  }

  function setting(status, name) {
    const row = status.configuration.find((entry) => entry.name === name);
    return row ? row.value : '';
  }

  function drawTrack(status) {
    const track = status.track;
    const playing = track.uri !== '';
    setText('track-title', playing ? track.title : 'Nothing is playing');
    setText('track-artist', track.artist);
    setText('track-album', track.album);
    setText('track-uri', track.uri);
    const known = track.durationSeconds > 0;
    const progress = byId('track-progress');
    progress.max = known ? track.durationSeconds : 1;
    progress.value = known ? Math.min(Math.max(track.positionSeconds, 0), track.durationSeconds) : 0;
    setText('track-time', playing ? track.position + ' / ' + (track.duration || '–') : '–');

    const art = isWebAddress(track.albumArt) ? track.albumArt : '';
    const link = byId('art-link');
    if (link.getAttribute('href') !== art) {
      if (art) {
        link.href = art;
        byId('art').src = art;
      } else {
        link.removeAttribute('href');
        byId('art').removeAttribute('src');
      }
    }
    show('art-link', art !== '');
    show('art-none', art === '');
  }

  function drawTransport(status) {
    const state = status.running ? status.transport.state || '–' : 'STOPPING';
    setText('transport-state', state.replace(/_/g, ' '));
    byId('transport-state').dataset.state = state;
  }

  function drawVolume(status) {
    const known = status.volume.volume !== null;
    byId('volume-meter').value = known ? status.volume.volume : 0;
    setText('volume-value', known ? String(status.volume.volume) : '–');
    show('volume-mute', status.volume.mute);
  }

  function drawPlaylist(status) {
    const playlist = status.playlist;
    setText('playlist-count', playlist.count ? '(' + playlist.count + ')' : '');
    const modes = [];
    if (playlist.repeat) modes.push('repeat');
    if (playlist.shuffle) modes.push('shuffle');
    setText('playlist-modes', modes.join(' · '));
    show('playlist-empty', playlist.count === 0);
    show('playlist-before', playlist.first > 0);
    setText('playlist-before', '… ' + playlist.first + ' before');
    show('playlist-more', playlist.more > 0);
    setText('playlist-more', '… and ' + playlist.more + ' more');
    redraw('playlist', playlist, (list) => {
      list.start = playlist.first + 1;
      for (const track of playlist.tracks) {
        const item = element('li', undefined, track.current ? 'current' : '');
        item.append(element('span', track.title, 'title'));
        if (track.artist) item.append(element('span', track.artist, 'artist'));
        list.append(item);
      }
    });
  }

  function drawSubscriptions(status) {
    const subscriptions = status.subscriptions;
    setText('subscription-count', subscriptions.count ? '(' + subscriptions.count + ')' : '');
    show('subscriptions-empty', subscriptions.count === 0);
    show('subscriptions-more', subscriptions.more > 0);
    setText('subscriptions-more', '… and ' + subscriptions.more + ' more');
    redraw('subscriptions', subscriptions.list, (body) => {
      for (const subscription of subscriptions.list) {
        const row = element('tr');
        row.append(element('td', subscription.service), element('td', subscription.from),
                   element('td', subscription.callback, 'uri'), element('td', expiry(subscription.expiresIn)));
        body.append(row);
      }
    });
  }

  function drawConfiguration(status) {
    redraw('configuration', status.configuration, (body) => {
      for (const entry of status.configuration) {
        const row = element('tr');
        row.append(element('th', entry.name), element('td', entry.value));
        body.append(row);
      }
    });
  }

  function drawLog(status) {
    redraw('log', status.log, (list) => {
      for (const line of status.log) {
        const item = element('li', undefined, line.level);
        item.append(element('time', clockTime(line.time)), element('span', line.level, 'level'),
                    element('span', line.text, 'text'));
        list.append(item);
      }
      list.scrollTop = list.scrollHeight;
    });
  }

  function drawProblems(status) {
    show('problems-card', status.problems.length > 0);
    redraw('problems', status.problems, (list) => {
      for (const problem of status.problems) list.append(element('li', problem));
    });
  }

  function draw(status) {
    const name = setting(status, 'friendly name') || 'Renderer';
    setText('device-name', name);
    if (document.title !== name + ' – status') document.title = name + ' – status';
    drawTransport(status);
    drawTrack(status);
    drawVolume(status);
    drawPlaylist(status);
    drawSubscriptions(status);
    drawConfiguration(status);
    drawLog(status);
    drawProblems(status);
  }

  function connected(ok, reason) {
    const connection = byId('connection');
    connection.classList.toggle('lost', !ok);
    setText('connection', ok ? 'updated ' + clockTime(Date.now()) : 'no answer from the renderer (' + reason + ')');
  }

  async function poll() {
    try {
      const response = await fetch('/status.json', {cache: 'no-store'});
      if (!response.ok) throw new Error('HTTP ' + response.status);
      draw(await response.json());
      connected(true);
    } catch (error) {
      connected(false, error.message);
    }
    window.setTimeout(poll, POLL_MILLISECONDS);
  }

  poll();
})();

// SPDX-License-Identifier: Apache-2.0
// Shows the device's state, as it comes, and what has come of what people asked for.
var show = (function () {
  'use strict';

  var column = 0, shown = {};
  var show = {finished: false, onnetwork: function () {}, onforget: function () {}};

  function $(id) { return document.getElementById(id); }

  function say(key, a, b) {
    return (words[key] || [key])[column].replace('{0}', a === undefined ? '' : a).replace('{1}', b || '');
  }

  function make(tag, className, text) {
    var element = document.createElement(tag);
    if (className) element.className = className;
    if (text !== undefined) element.textContent = text;
    return element;
  }

  // True if the content of `name` has changed since the last time. Unchanged content stays, and
  // keeps its focus.
  function changed(name, value) {
    var text = column + JSON.stringify(value);
    if (shown[name] === text) return false;
    shown[name] = text;
    return true;
  }

  show.setLanguage = function (index) {
    column = index;
    document.documentElement.lang = languages[index][0];
    document.documentElement.dir = languages[index][2];
    var texts = document.querySelectorAll('[data-word]');
    for (var i = 0; i < texts.length; i++) texts[i].textContent = say(texts[i].getAttribute('data-word'));
    document.title = say('title');
    $('language').setAttribute('aria-label', say('language'));
    show.all();
  };

  function renderHead() {
    var line = say('notConnected');
    if (!state.host) line = say('noHost');
    else if (state.airplane) line = say('airplaneOn');
    else if (state.wired.state === 'connected') line = say('connectedWired');
    else if (state.wireless.state === 'connected') line = say('connectedTo', state.wireless.ssid);
    else if (state.wired.connecting === 'connecting' || state.wireless.connecting === 'connecting') line = say('connecting');
    if ($('headline').textContent !== line) $('headline').textContent = line;
  }

  function renderFacts() {
    var facts = !state.host ? [] : [
      [say('cable'), say(state.wired.cable ? 'cableIn' : 'cableOut')],
      [say('addressFact'), state.wired.addresses.concat(state.wireless.addresses).join(', ')],
      [say('onlineFact'), state.online === 'unknown' ? '' : say('online-' + state.online)],
      [say('page'), state.ways[0] || '']];
    if (!changed('facts', facts)) return;
    $('facts').textContent = '';
    facts.forEach(function (fact) {
      if (!fact[1]) return;
      var row = make('div');
      row.appendChild(make('dt', '', fact[0]));
      row.appendChild(make('dd', '', fact[1]));
      $('facts').appendChild(row);
    });
  }

  // What an attempt has come to; without one, why the device is not in a network: the page may have been closed by
  // the phone while the device tried.
  function progressOf(now) {
    var last = state.lastJoin;
    if (now) return {phase: now.phase, text: now.text || (now.error ? failure(now.error) : say(now.phase === 'saved' && now.done || now.phase, now.ssid || now.name))};
    if (!state.host || state.state === 'connected' || last.result !== 'failed') return null;
    return {phase: attempt.phaseOf(last), text: say(attempt.phaseOf(last), last.ssid)};
  }

  function failure(error) {
    return {absent: 1, late: 1}[error.error] ? say(error.error) : say('refused', error.message || error.error);
  }
  show.failure = failure;
  show.say = say;

  function renderProgress() {
    var softApIsOn = state.host && state.softAp.state === 'connected', now = attempt.now;
    $('finish').hidden = show.finished || !(now && now.phase === 'joined' && softApIsOn);
    var progress = show.finished ? {phase: 'finished', text: say('finished')} : progressOf(now);
    if (!changed('progress', [progress, now && now.pin, state.ways])) return;
    var box = $('progress');
    box.textContent = '';
    if (!progress) return;
    var kind = {joined: ' good', finished: ' good', saved: ' good', trying: '', sending: '', addressing: '', onTrial: '', byCable: '', slow: '', wps: ''}[progress.phase];
    box.appendChild(make('p', 'notice' + (kind === undefined ? ' bad' : kind), progress.text));
    if (now && now.pin) box.appendChild(make('p', 'pin', now.pin));
    if (progress.phase === 'joined' && state.ways.length) box.appendChild(make('p', '', say('joinedAt', state.ways[0])));
  }

  function renderTrial() {
    $('trial').hidden = !state.trial;
    if (!state.trial) return;
    var left = Math.max(0, state.trial.seconds - Math.round((Date.now() - device.since) / 1000));
    $('trial-text').textContent = say('trial', left);
  }

  function strength(signal) { return signal >= -55 ? 4 : signal >= -65 ? 3 : signal >= -75 ? 2 : 1; }

  function networkRow(network) {
    var row = make(network.unsupported ? 'div' : 'button', 'row'), name = make('span', 'grow'), bars = make('span', 'bars'), level = strength(network.signal);
    bars.setAttribute('aria-hidden', 'true');
    for (var i = 1; i <= 4; i++) bars.appendChild(make('i', i <= level ? 'on' : ''));
    var isOpen = network.security === 'none' && !network.unsupported;
    var isUsed = state.host && state.wireless.state === 'connected' && state.wireless.ssid === network.ssid;
    name.appendChild(make('span', '', network.ssid + (isUsed ? ' ✓' : '')));
    if (network.unsupported) name.appendChild(make('div', 'hint', say('unsupported-' + network.unsupported)));
    row.appendChild(name);
    row.appendChild(make('span', 'aside', (isUsed ? ', ' + say('inUse') : '') + ', ' +
      say(isOpen ? 'open' : 'secured') + ', ' + say('signal' + level)));
    if (!isOpen) {
      var lock = make('span', 'lock');
      lock.setAttribute('aria-hidden', 'true');
      row.appendChild(lock);
    }
    row.appendChild(bars);
    if (!network.unsupported) row.onclick = function () { show.onnetwork(network); };
    return row;
  }

  // Fills a list anew; who had the focus in it has it again, by the row's number.
  function fillList(list, rows) {
    var buttons = [].slice.call(list.querySelectorAll('button')), focus = buttons.indexOf(document.activeElement);
    list.textContent = '';
    rows.forEach(function (row) { list.appendChild(row); });
    buttons = list.querySelectorAll('button');
    if (focus >= 0 && buttons.length) buttons[Math.min(focus, buttons.length - 1)].focus();
  }

  function renderNetworks() {
    var networks = device.networks, inUse = state.host && state.wireless.state === 'connected' && state.wireless.ssid;
    if (!changed('networks', [networks, inUse])) return; // a row that goes away takes the tap on it along
    fillList($('networks'), networks.length ? networks.map(function (network) {
      var item = make('li');
      item.appendChild(networkRow(network));
      return item;
    }) : [make('li', 'hint', say('none'))]);
  }

  function knownRow(network) {
    var item = make('li'), button = make('button', '', say('forget'));
    item.appendChild(make('span', 'grow', network.ssid));
    if (network.suspect) item.appendChild(make('span', 'bad', say('suspect')));
    button.setAttribute('aria-label', say('forget') + ' ' + network.ssid);
    button.onclick = function () {
      if (!button.isSure) {
        button.isSure = true;
        button.textContent = say('forgetSure');
        button.setAttribute('aria-label', say('forgetSure') + ' ' + network.ssid);
        return;
      }
      show.onforget(network);
    };
    item.appendChild(button);
    return item;
  }

  function renderKnown() {
    if (!changed('known', state.known)) return;
    $('known-part').hidden = !state.known.length;
    fillList($('known'), state.known.map(knownRow));
  }

  function renderAddress() {
    var isEditing = $('address').contains(document.activeElement);
    var set = state[$('interface').value + 'Address'];
    if (isEditing || !changed('address', [$('interface').value, set])) return;
    $('dhcp').checked = set.dhcp;
    ['ip', 'netmask', 'gateway'].forEach(function (field) { $(field).value = set[field]; });
    $('dns').value = set.dns.join(' ');
    $('static').hidden = set.dhcp;
  }

  function renderRest() {
    var isOn = state.softAp.state === 'connected';
    $('softap-state').textContent = (state.softAp.name ? '“' + state.softAp.name + '”: ' : '') +
      (isOn ? say('softApOn', state.softAp.stations) + ' ' + say(state.softAp.secured ? 'softApSecured' : 'softApIsOpen') : say('softApOff'));
    $('softap-auto').checked = state.softAp.auto;
    $('softap-close').hidden = !isOn;
    $('airplane').textContent = say(state.airplane ? 'airplaneEnd' : 'airplaneStart');
    $('airplane').setAttribute('aria-pressed', state.airplane ? 'true' : 'false');
  }

  // Where a device that does not answer went, and what people can do about it.
  function lostText() {
    var now = attempt.now, elsewhere = device.elsewhere()[0], text = say('lost');
    if (!now || Date.now() - device.lostSince < 6000 && !now.softAp) return text;
    if (now.softAp) return say('goSoftAp', now.softAp);
    if (device.target) text = say('goAddress', device.target);
    else if (now.ssid && elsewhere) text = say('goHome', now.ssid, elsewhere);
    else if (now.ssid) text = say('goBack', now.ssid);
    return now.trial ? text + ' ' + say('goTrial') : text;
  }

  function renderLost() {
    var isLost = device.lostSince && Date.now() - device.lostSince > 2500;
    $('lost').hidden = !isLost;
    if (!isLost) return;
    var text = lostText();
    if ($('lost').textContent !== text) $('lost').textContent = text;
  }

  var state = null;
  show.all = function () {
    renderLost();
    $('code-form').hidden = !device.isLocked;
    $('page').hidden = device.isLocked || !device.state;
    state = device.state;
    if (!state) return;
    renderHead();
    renderFacts();
    renderProgress();
    renderTrial();
    renderNetworks();
    if (!state.host) return;
    renderKnown();
    renderAddress();
    renderRest();
  };

  return show;
}());

// SPDX-License-Identifier: Apache-2.0
// What people do on the page.
(function () {
  'use strict';

  var say = show.say, act = device.act;

  function $(id) { return document.getElementById(id); }

  function chooseLanguage() {
    var wanted = (navigator.language || 'en').slice(0, 2), chosen = 0;
    languages.forEach(function (language, index) {
      var option = document.createElement('option');
      option.textContent = language[1];
      option.value = index;
      option.lang = language[0];
      $('language').appendChild(option);
      if (language[0] === wanted) chosen = index;
    });
    $('language').value = chosen;
    $('language').onchange = function () { show.setLanguage(+this.value); };
    show.setLanguage(chosen);
  }

  // Has it done, and says under the headline what it came to.
  function ask(name, body, what) {
    show.finished = false;
    what = what || {};
    attempt.begin(what);
    if (what.id) body.trial = what.id;
    show.all();
    attend();
    act(name, body, function (error, answer) {
      attempt.answered(what, error, answer);
      show.all();
    });
  }

  function fail(error) {
    var what = {};
    attempt.begin(what);
    attempt.answered(what, error);
    show.all();
  }

  function attend() { // who hears the page instead of seeing it is led there
    $('progress').scrollIntoView();
    $('progress').focus();
  }

  // --- a network

  function openJoin(network) {
    var known = network && device.state.known.some(function (other) { return other.ssid === network.ssid; });
    $('join').hidden = false;
    $('join-title').textContent = network ? say('joinTitle', network.ssid) : say('hiddenTitle');
    $('join-name').hidden = !!network;
    $('ssid').value = network ? network.ssid : '';
    $('join-key').hidden = !!network && network.security === 'none';
    $('key').value = '';
    $('key').required = !!network && !known && network.security !== 'none';
    $('key-hint').textContent = say(known ? 'keyKnown' : network ? 'keyHint' : 'keyOptional');
    $('join-error').textContent = '';
    $('join').scrollIntoView();
    (network ? $('join-key').hidden ? $('join').querySelector('.main') : $('key') : $('ssid')).focus();
  }

  function joinError(ssid, key) {
    if (!ssid) return say('nameBad');
    return !key || /^[0-9a-fA-F]{64}$/.test(key) || (key.length >= 8 && key.length <= 63) ? '' : say('keyBad');
  }

  $('join').onsubmit = function (event) {
    event.preventDefault();
    var ssid = $('ssid').value, key = $('join-key').hidden ? '' : $('key').value, body = {ssid: ssid};
    $('join-error').textContent = joinError(ssid, key);
    if ($('join-error').textContent) return;
    if (key) body.key = key;
    $('key').value = '';
    $('join').hidden = true;
    device.target = '';
    ask('join', body, {ssid: ssid});
  };
  $('join-cancel').onclick = function () { $('join').hidden = true; $('scan').focus(); };
  $('show-key').onchange = function () { $('key').type = this.checked ? 'text' : 'password'; };
  $('hidden').onclick = function () { openJoin(null); };
  show.onnetwork = openJoin;
  show.onforget = function (network) { ask('forget', {ssid: network.ssid}, {done: 'forgotten', name: network.ssid}); };

  $('scan').onclick = function () {
    $('scan').disabled = true;
    $('scan').textContent = say('scanning');
    act('scan', {}, function (error) {
      $('scan').disabled = false;
      $('scan').textContent = say('scan');
      if (error) fail(error);
    });
  };

  function startWps(word, name, body, pin) {
    var session = {phase: 'wps', text: say(word), pin: pin};
    show.finished = false;
    attempt.begin(session);
    show.all();
    attend();
    act(name, body, function (error, answer) {
      if (attempt.now !== session) return;
      session.pin = undefined;
      session.text = error ? say('wpsFailed') + ' ' + show.failure(error) : '';
      session.ssid = error ? '' : answer.ssid;
      attempt.answered(session, error, answer);
      show.all();
    });
  }
  $('wps-button').onclick = function () { startWps('wpsPress', 'wps-button', {}); };
  $('wps-pin').onclick = function () {
    act('wps-new-pin', {}, function (error, answer) {
      if (!error) return startWps('wpsEnter', 'wps-pin', {pin: answer.pin}, answer.pin);
      fail(error);
    });
  };

  // --- the rest

  $('interface').onchange = function () { this.blur(); show.all(); };
  $('dhcp').onchange = function () { $('static').hidden = this.checked; };
  $('address').onsubmit = function (event) {
    event.preventDefault();
    var body = {interface: $('interface').value, dhcp: $('dhcp').checked};
    if (!body.dhcp) {
      ['ip', 'netmask', 'gateway'].forEach(function (field) { body[field] = $(field).value.trim(); });
      body.dns = $('dns').value.split(/[\s,;]+/).filter(Boolean);
    }
    $('address-error').textContent = '';
    var what = {address: body};
    attempt.begin(what);
    body.trial = what.id;
    show.all();
    attend();
    if (!body.dhcp) device.target = 'http://' + body.ip + (location.port ? ':' + location.port : '') + '/';
    act('address', body, function (error, answer) {
      if (error && error.error === 'malformed') {
        attempt.now = null;
        $('address-error').textContent = say('addressBad', say(error.message));
      } else {
        // A page that does not come by this interface has nothing to follow; no answer comes where it does.
        if (answer && !answer.trial) device.target = '';
        attempt.answered(what, error, answer);
      }
      show.all();
    });
  };

  $('softap').onsubmit = function (event) {
    event.preventDefault();
    var name = $('softap-name').value, passphrase = $('softap-passphrase').value, isBad = passphrase && !/^[ -~]{8,63}$/.test(passphrase);
    $('softap-error').textContent = isBad ? say('keyBad') : '';
    if (isBad) return;
    $('softap-passphrase').value = '';
    ask('softap', {ssid: name, passphrase: passphrase}, {softAp: name || device.state.softAp.name, done: 'softApOpened'});
  };
  $('show-passphrase').onchange = function () { $('softap-passphrase').type = this.checked ? 'text' : 'password'; };
  $('softap-close').onclick = function () { ask('finish', {}, {done: 'softApClosed'}); };
  $('softap-auto').onchange = function () { ask('softap-auto', {on: this.checked}); };
  $('airplane').onclick = function () {
    var on = !device.state.airplane;
    ask('airplane', {on: on}, {done: on ? 'inFlightNow' : 'onAirAgain'});
  };
  $('trial-keep').onclick = function () { ask('confirm', {}, {done: 'kept'}); };
  $('trial-back').onclick = function () { ask('rollback', {}, {done: 'takenBack'}); };
  $('finish').onclick = function () {
    show.finished = true;
    show.all();
    act('finish', {}, function () {});
  };

  $('code-form').onsubmit = function (event) {
    event.preventDefault();
    device.unlock($('code').value);
  };
  device.onlocked = function (why) {
    show.all();
    $('code-error').textContent = why ? say(why === 'code' ? 'codeWrong' : 'codeWait') : '';
    if (why) $('code').select();
    else $('code').focus();
  };

  device.onchange = function () {
    attempt.follow();
    show.all();
  };
  setInterval(function () {
    device.watch();
    device.onchange();
  }, 1000);
  chooseLanguage();
  device.start();
}());

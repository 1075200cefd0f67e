// SPDX-License-Identifier: Apache-2.0
// The page's behaviour, in the JavaScript of ten years ago. State comes by events and is shown as it comes;
// what people do goes out as a request each.
(function () {
  'use strict';

  var token = '', state = null, networks = [], column = 0, shown = {};
  var joining = null; // {ssid, since, phase}: what was asked of the device last
  var finished = false, source = null, lostSince = 0, ways = [];

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

  // --- language

  function setLanguage(index) {
    column = index;
    document.documentElement.lang = languages[index][0];
    document.documentElement.dir = languages[index][2];
    var texts = document.querySelectorAll('[data-word]');
    for (var i = 0; i < texts.length; i++) texts[i].textContent = say(texts[i].getAttribute('data-word'));
    document.title = say('title');
    render();
  }

  function chooseLanguage() {
    var wanted = (navigator.language || 'en').slice(0, 2);
    for (var i = 0; i < languages.length; i++) {
      var option = make('option', '', languages[i][1]);
      option.value = i;
      option.lang = languages[i][0];
      $('language').appendChild(option);
      if (languages[i][0] === wanted) column = i;
    }
    $('language').value = column;
    $('language').onchange = function () { setLanguage(+this.value); };
    setLanguage(column);
  }

  // --- talking to the device

  function send(method, path, body, done) {
    var request = new XMLHttpRequest();
    request.open(method, path);
    request.timeout = 140000;
    if (body) request.setRequestHeader('Content-Type', 'application/json');
    if (token) request.setRequestHeader('X-Orva-Token', token);
    request.onload = function () {
      var answer = {error: 'late'};
      try { answer = JSON.parse(request.responseText); } catch (e) { /* not one of ours */ }
      done(request.status === 200 ? null : answer, answer);
    };
    request.onerror = request.ontimeout = function () { done({error: 'late'}); };
    request.send(body ? JSON.stringify(body) : null);
  }

  // done(error, answer); a token that a new start of the program made stale is had anew, once.
  function act(name, body, done, again) {
    send('POST', '/api/' + name, body, function (error, answer) {
      if (error && error.error === 'token' && !again) {
        return getToken(null, function () { act(name, body, done, true); });
      }
      done(error, answer);
    });
  }

  function getToken(code, done) {
    send(code === null ? 'GET' : 'POST', '/api/token', code === null ? null : {code: code}, function (error, answer) {
      if (error && (error.error === 'code' || error.error === 'wait')) {
        $('code-form').hidden = false;
        $('page').hidden = true;
        if (code !== null) {
          $('code-error').textContent = say(error.error === 'code' ? 'codeWrong' : 'codeWait');
          $('code').select();
        } else {
          $('code').focus();
        }
        return;
      }
      if (error) return setTimeout(function () { getToken(code, done); }, 2000);
      token = answer.token;
      $('code-form').hidden = true;
      done();
    });
  }

  function listen() {
    if (source) source.close();
    source = new EventSource('/api/events?token=' + token);
    source.addEventListener('state', function (event) {
      state = JSON.parse(event.data);
      if (state.ways && state.ways.length) ways = state.ways;
      lostSince = 0;
      $('page').hidden = false;
      followJoin();
      render();
    });
    source.addEventListener('networks', function (event) {
      networks = JSON.parse(event.data);
      render();
    });
    source.onerror = function () {
      if (!lostSince) lostSince = Date.now();
      if (source.readyState === 2) setTimeout(begin, 2000); // refused: by another start of the program
      render();
    };
  }

  function begin() { getToken(null, listen); }

  // A phone that has left the access point is in the home network, or soon will be: there the device's icon
  // shows that the device is.
  function lookElsewhere() {
    if (!lostSince || Date.now() - lostSince < 4000) return;
    ways.forEach(function (way) {
      if (way.indexOf(location.origin + '/') === 0) return;
      var icon = new Image();
      icon.onload = function () { location.replace(way); };
      icon.src = way + 'icon.svg?' + Date.now();
    });
  }

  // --- a join in words

  function startJoin(ssid) {
    joining = {ssid: ssid, since: Date.now(), phase: 'sending'};
    finished = false;
    $('join').hidden = true;
    render();
    $('progress').scrollIntoView();
  }

  function failWith(error) {
    var known = {absent: 'absent', late: 'late'}[error.error];
    return known ? say(known) : say('refused', error.message || error.error);
  }

  function joinAnswered(error) {
    if (!joining) return;
    joining.phase = error ? 'failed' : 'trying';
    joining.text = error ? failWith(error) : '';
    joining.since = Date.now();
    followJoin();
    render();
  }

  function isSuspect(ssid) {
    return state.known.some(function (network) { return network.ssid === ssid && network.suspect; });
  }

  function followJoin() {
    if (!joining || !state || !state.host || joining.phase === 'sending' || joining.phase === 'failed') return;
    var link = state.wireless, seconds = (Date.now() - joining.since) / 1000;
    if (link.state === 'connected' && link.ssid === joining.ssid) {
      joining.phase = link.addresses.length ? 'joined' : 'addressing';
    } else if (isSuspect(joining.ssid) || link.connecting === 'authenticationFailed') {
      joining.phase = 'wrongKey';
    } else if (state.wired.state === 'connected' && seconds > 10) {
      joining.phase = 'byCable';
    } else if (seconds > 60) {
      joining.phase = 'slow';
    } else if (seconds > 25 && networks.every(function (network) { return network.ssid !== joining.ssid; })) {
      joining.phase = 'notFound';
    } else {
      joining.phase = 'trying';
    }
  }

  // --- showing

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

  function renderProgress() {
    var softApIsOn = state.host && state.softAp.state === 'connected';
    $('finish').hidden = finished || !(joining && joining.phase === 'joined' && softApIsOn);
    if (!changed('progress', [joining, finished, state.ways, state.wireless && state.wireless.wps])) return;
    var box = $('progress');
    box.textContent = '';
    if (finished) return box.appendChild(make('p', 'notice good', say('finished')));
    if (!joining) return;
    var kind = {joined: ' good', wrongKey: ' bad', failed: ' bad', notFound: ' bad'}[joining.phase] || '';
    var text = joining.text || say(joining.phase, joining.ssid);
    box.appendChild(make('p', 'notice' + kind, text));
    if (joining.pin) box.appendChild(make('p', 'pin', joining.pin));
    if (joining.phase === 'joined' && state.ways.length) box.appendChild(make('p', '', say('joinedAt', state.ways[0])));
  }

  function strength(signal) { return signal >= -55 ? 4 : signal >= -65 ? 3 : signal >= -75 ? 2 : 1; }

  function networkRow(network) {
    var row = make('button', 'row'), bars = make('span', 'bars'), level = strength(network.signal);
    bars.setAttribute('aria-hidden', 'true');
    for (var i = 1; i <= 4; i++) bars.appendChild(make('i', i <= level ? 'on' : ''));
    var isUsed = state.host && state.wireless.state === 'connected' && state.wireless.ssid === network.ssid;
    row.appendChild(make('span', 'grow', network.ssid + (isUsed ? ' ✓' : '')));
    row.appendChild(make('span', 'aside', (isUsed ? ', ' + say('inUse') : '') + ', ' +
      say(network.security === 'none' ? 'open' : 'secured') + ', ' + say('signal' + level)));
    if (network.security !== 'none') {
      var lock = make('span', 'lock');
      lock.setAttribute('aria-hidden', 'true');
      row.appendChild(lock);
    }
    row.appendChild(bars);
    row.onclick = function () { openJoin(network); };
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
    var inUse = state.host && state.wireless.state === 'connected' && state.wireless.ssid;
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
      act('forget', {ssid: network.ssid}, tell);
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
      (isOn ? say('softApOn', state.softAp.stations) : say('softApOff'));
    $('softap-auto').checked = state.softAp.auto;
    $('softap-close').hidden = !isOn;
    $('airplane').textContent = say(state.airplane ? 'airplaneEnd' : 'airplaneStart');
    $('airplane').setAttribute('aria-pressed', state.airplane ? 'true' : 'false');
  }

  function renderLost() {
    var isLost = lostSince && Date.now() - lostSince > 2500, elsewhere = ways.filter(function (way) {
      return way.indexOf(location.origin + '/') !== 0;
    })[0];
    $('lost').hidden = !isLost;
    if (!isLost) return;
    var text = say('lost');
    if (joining && elsewhere && Date.now() - lostSince > 8000) text = say('goHome', joining.ssid, elsewhere);
    else if (joining && Date.now() - lostSince > 8000) text = say('goBack');
    if ($('lost').textContent !== text) $('lost').textContent = text;
  }

  function render() {
    renderLost();
    if (!state) return;
    renderHead();
    renderFacts();
    renderProgress();
    renderNetworks();
    if (!state.host) return;
    renderKnown();
    renderAddress();
    renderRest();
  }

  // --- what people do

  // Says under the headline what an action came to.
  function tell(error) {
    joining = {ssid: '', phase: error ? 'failed' : 'done', text: error ? failWith(error) : say('saved')};
    render();
  }

  function openJoin(network) {
    var known = network && state.known.some(function (other) { return other.ssid === network.ssid; });
    $('join').hidden = false;
    $('join-title').textContent = network ? say('joinTitle', network.ssid) : say('hiddenTitle');
    $('join-name').hidden = !!network;
    $('ssid').value = network ? network.ssid : '';
    $('join-key').hidden = !!network && network.security === 'none';
    $('key').value = '';
    $('key').required = !!network && !known && network.security !== 'none';
    $('key-hint').textContent = say(known ? 'keyKnown' : network ? 'keyHint' : 'keyOptional');
    $('join-error').textContent = network && network.security === 'wep' ? say('wep') : '';
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
    startJoin(ssid);
    act('join', body, joinAnswered);
  };
  $('join-cancel').onclick = function () { $('join').hidden = true; $('scan').focus(); };
  $('show-key').onchange = function () { $('key').type = this.checked ? 'text' : 'password'; };
  $('hidden').onclick = function () { openJoin(null); };

  $('scan').onclick = function () {
    $('scan').disabled = true;
    $('scan').textContent = say('scanning');
    act('scan', {}, function (error) {
      $('scan').disabled = false;
      $('scan').textContent = say('scan');
      if (error) tell(error);
    });
  };

  function startWps(word, name, body, pin) {
    startJoin('');
    joining.text = say(word);
    joining.pin = pin;
    render();
    act(name, body, function (error, answer) {
      if (!joining || joining.ssid) return;
      if (error) {
        joining = {ssid: '', phase: 'failed', text: say('wpsFailed') + ' ' + failWith(error)};
        return render();
      }
      joining.ssid = answer.ssid;
      joining.pin = undefined;
      joinAnswered(null);
    });
  }
  $('wps-button').onclick = function () { startWps('wpsPress', 'wps-button', {}); };
  $('wps-pin').onclick = function () {
    act('wps-new-pin', {}, function (error, answer) {
      if (error) return tell(error);
      startWps('wpsEnter', 'wps-pin', {pin: answer.pin}, answer.pin);
    });
  };

  $('interface').onchange = function () { this.blur(); render(); };
  $('dhcp').onchange = function () { $('static').hidden = this.checked; };
  $('address').onsubmit = function (event) {
    event.preventDefault();
    var body = {interface: $('interface').value, dhcp: $('dhcp').checked};
    if (!body.dhcp) {
      ['ip', 'netmask', 'gateway'].forEach(function (field) { body[field] = $(field).value.trim(); });
      body.dns = $('dns').value.split(/[\s,;]+/).filter(Boolean);
    }
    $('address-error').textContent = '';
    act('address', body, function (error) {
      if (error && error.error === 'malformed') $('address-error').textContent = say('addressBad', say(error.message));
      else tell(error);
    });
  };

  $('softap').onsubmit = function (event) {
    event.preventDefault();
    act('softap', {ssid: $('softap-name').value}, tell);
  };
  $('softap-close').onclick = function () { act('finish', {}, tell); };
  $('softap-auto').onchange = function () { act('softap-auto', {on: this.checked}, tell); };
  $('airplane').onclick = function () { act('airplane', {on: !state.airplane}, tell); };
  $('finish').onclick = function () {
    finished = true;
    render();
    act('finish', {}, function () {});
  };

  $('code-form').onsubmit = function (event) {
    event.preventDefault();
    getToken($('code').value, listen);
  };

  setInterval(function () {
    followJoin();
    render();
    lookElsewhere();
  }, 2000);
  chooseLanguage();
  begin();
}());

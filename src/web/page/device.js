// SPDX-License-Identifier: Apache-2.0
// The device as the page knows it: its state comes by events, what people do goes out as a request each, and a
// device that has left this connection is looked for where else it may be. In the JavaScript of ten years ago.
var device = (function () {
  'use strict';

  var SILENT = 8000; // the device says each 3 seconds that it is there
  var token = '', source = null, heardAt = 0, looking = {}, isBeginning = false;

  var device = {
    state: null, networks: [],
    since: 0, // when the state came
    lostSince: 0, foundAt: 0,
    target: '', // where the device was told to be from now on
    trial: '', // the id under which a change was asked for last: it goes along when the page follows the device
    carried: '', // the id with which this page came, after it had followed the device
    isLocked: false, // true while the access code is wanted
    onchange: function () {}, onlocked: function () {}
  };

  function send(method, path, body, seconds, done) {
    var request = new XMLHttpRequest();
    request.open(method, path);
    request.timeout = seconds * 1000;
    if (body) request.setRequestHeader('Content-Type', 'application/json');
    if (token) request.setRequestHeader('X-Orva-Token', token);
    request.onload = function () {
      var answer = {error: 'late'};
      try { answer = JSON.parse(request.responseText); } catch (e) { /* not one of ours */ }
      done(request.status === 200 ? null : answer, answer);
    };
    request.onerror = request.ontimeout = function () { done({error: 'lost'}); };
    request.send(body ? JSON.stringify(body) : null);
  }

  // done(error, answer); a token that a new start of the program made stale is had anew, once.
  device.act = function (name, body, done, again) {
    send('POST', '/api/' + name, body, 140, function (error, answer) {
      if (error && error.error === 'token' && !again) {
        return getToken(null, function () { device.act(name, body, done, true); });
      }
      done(error, answer);
    });
  };

  function getToken(code, done) {
    send(code === null ? 'GET' : 'POST', '/api/token', code === null ? null : {code: code}, 5, function (error, answer) {
      if (error && (error.error === 'code' || error.error === 'wait')) {
        device.isLocked = true;
        return device.onlocked(code === null ? '' : error.error);
      }
      if (error) return setTimeout(function () { getToken(code, done); }, 2000);
      token = answer.token;
      device.isLocked = false;
      done();
    });
  }

  function heard() {
    heardAt = Date.now();
    if (device.lostSince) device.foundAt = heardAt;
    device.lostSince = 0;
  }

  function lose() { if (!device.lostSince) device.lostSince = Date.now(); }

  function listen() {
    isBeginning = false;
    heardAt = Date.now();
    source = new EventSource('/api/events?token=' + token);
    source.addEventListener('state', function (event) {
      heard();
      device.since = heardAt;
      device.state = JSON.parse(event.data);
      device.onchange();
    });
    source.addEventListener('networks', function (event) {
      heard();
      device.networks = JSON.parse(event.data);
      device.onchange();
    });
    source.addEventListener('alive', heard);
    source.onerror = function () {
      lose();
      if (source && source.readyState === 2) close(); // refused: by another start of the program
    };
  }

  function close() {
    if (source) source.close();
    source = null;
  }

  function begin() {
    isBeginning = true;
    getToken(null, listen);
  }

  device.unlock = function (code) { getToken(code, listen); };

  // The places where the device may be, other than this one.
  device.elsewhere = function () {
    var ways = (device.state && device.state.ways || []).concat(device.target || []);
    return ways.filter(function (way) { return way.indexOf(location.origin + '/') !== 0; });
  };

  // A phone that has left the access point is in the home network, or soon will be: there the device's icon shows
  // that the device is. Whoever answers there learns the id of the change and nothing that has a right.
  function look() {
    device.elsewhere().forEach(function (way) {
      if (looking[way]) return;
      var icon = looking[way] = new Image();
      icon.onload = function () { location.replace(device.trial ? way + '#' + device.trial : way); };
      icon.onerror = function () {
        if (looking[way] === icon) looking[way] = null;
      };
      icon.src = way + 'icon.svg?' + Date.now();
      setTimeout(function () { // a browser has few connections to spare for an address where nobody answers
        icon.onerror();
        icon.onload = icon.onerror = null;
        icon.src = '';
      }, 5000);
    });
  }

  // Once a second: a connection that has lost its way does not end by itself.
  device.watch = function () {
    if (source && Date.now() - heardAt > SILENT) {
      lose();
      close();
    }
    if (!source && !isBeginning && !device.isLocked) begin();
    if (device.lostSince && Date.now() - device.lostSince > 3000) look();
  };

  device.start = function () {
    device.trial = device.carried = location.hash.slice(1);
    if (device.carried) history.replaceState(null, '', location.pathname);
    begin();
  };

  return device;
}());

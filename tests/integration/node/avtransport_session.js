// Drives the renderer through AVTransport with the Node control point (upnp-mediarenderer-client on Node's
// default HTTP agent, with its own HTTP server for events) and prints one JSON line per step and per event.
// The Python test (test_avtransport.py) reads the lines and decides; this script only reports.
//
//   node avtransport_session.js DESCRIPTION_URL MEDIA_URL CONTENT_TYPE
//
// The session: subscribe, load, play, position advancing, pause, position still, seek REL_TIME 0:00:03,
// stop. It stops at the first step that fails and says so.
'use strict';

const MediaRendererClient = require('upnp-mediarenderer-client');

const [descriptionUrl, mediaUrl, contentType] = process.argv.slice(2);
const started = Date.now();

function report(record) {
  record.t = (Date.now() - started) / 1000;
  process.stdout.write(JSON.stringify(record) + '\n');
}

const client = new MediaRendererClient(descriptionUrl);
client.on('error', (error) => report({kind: 'error', message: error.message, statusCode: error.statusCode}));

// On purpose: the client's event server reads each NOTIFY but never answers it, and a GENA sender waits
// for the answer before it sends the next NOTIFY to the same subscriber. We answer for the client, once
// the request's body is read, so that the session sees every event; its server and agent stay as they are.
const ensureEventingServer = client.ensureEventingServer;
client.ensureEventingServer = function (callback) {
  ensureEventingServer.call(this, callback);
  if (this.server && !this.server.answersNotify) {
    this.server.answersNotify = true;
    this.server.on('request', (request, response) => request.on('end', () => response.end()));
  }
};

function step(name, run) {
  return new Promise((resolve) => {
    run((error, result) => {
      const record = {kind: 'step', step: name, ok: !error};
      if (error) {
        record.error = error.message;
        record.code = error.code;
        record.errorCode = error.errorCode;
      }
      if (result !== undefined) record.result = result;
      report(record);
      resolve({error, result});
    });
  });
}

const sleep = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

function action(name, parameters) {
  return step(name, (done) => client.callAction('AVTransport', name, parameters, done));
}

async function waitForState(wanted, milliseconds) {
  const deadline = Date.now() + milliseconds;
  for (;;) {
    const {error, result} = await action('GetTransportInfo', {InstanceID: 0});
    if (error) return false;
    if (result.CurrentTransportState === wanted) return true;
    if (Date.now() > deadline) return false;
    await sleep(100);
  }
}

async function position() {
  const {error, result} = await action('GetPositionInfo', {InstanceID: 0});
  return error ? null : result.RelTime;
}

function seconds(text) {
  const parts = (text || '').split(':').map(Number);
  return parts.length === 3 ? parts[0] * 3600 + parts[1] * 60 + parts[2] : NaN;
}

async function session() {
  client.on('status', (event) => report({kind: 'event', event}));
  await sleep(700);

  const metadata = {title: 'Integration tone', type: 'audio'};
  if ((await step('load', (done) => client.load(mediaUrl, {contentType, metadata}, done))).error) return;
  // The events of the load itself arrive before the mark (they are moderated for at most 200 ms).
  await sleep(800);
  report({kind: 'mark', mark: 'play'});
  if ((await step('play', (done) => client.play(done))).error) return;
  if (!(await waitForState('PLAYING', 6000))) return report({kind: 'aborted', reason: 'never PLAYING'});

  let advanced = false;
  for (const deadline = Date.now() + 6000; Date.now() < deadline;) {
    const now = await position();
    if (now === null) return;
    if (seconds(now) >= 1) {
      advanced = true;
      break;
    }
    await sleep(200);
  }
  if (!advanced) return report({kind: 'aborted', reason: 'position did not reach 0:00:01'});

  if ((await step('pause', (done) => client.pause(done))).error) return;
  if (!(await waitForState('PAUSED_PLAYBACK', 4000))) {
    return report({kind: 'aborted', reason: 'never PAUSED_PLAYBACK'});
  }
  const pausedAt = await position();
  await sleep(700);
  report({kind: 'paused', first: pausedAt, second: await position()});

  if ((await step('seek', (done) => client.seek(3, done))).error) return;
  let sought = null;
  for (const deadline = Date.now() + 4000; Date.now() < deadline;) {
    sought = await position();
    if (sought === null) return;
    if (seconds(sought) === 3) break;
    await sleep(100);
  }
  report({kind: 'sought', position: sought});

  if ((await step('stop', (done) => client.stop(done))).error) return;
  if (!(await waitForState('STOPPED', 4000))) return report({kind: 'aborted', reason: 'never STOPPED'});
  await sleep(1200);
  report({kind: 'done'});
}

session().then(() => process.exit(0), (error) => {
  report({kind: 'aborted', reason: String(error && error.stack || error)});
  process.exit(0);
});

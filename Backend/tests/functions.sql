-- The six answers, as JSON: what clients read.
BEGIN;
\ir helpers.sql
SELECT no_plan();

-- Two accounts with the same devices and applications; ada has two devices.
SELECT pg_temp.day_row(email, device, day, count)
FROM (VALUES
    ('ada@example.org', 'desk', '2026-03-05', 100), ('ada@example.org', 'lap', '2026-03-05', 20),
    ('ada@example.org', 'desk', '2026-03-04', 7), ('ada@example.org', 'desk', '2026-02-04', 5),
    ('ada@example.org', 'desk', '2026-02-03', 3), ('ada@example.org', 'desk', '2026-03-06', 1000),
    ('bob@example.org', 'desk', '2026-03-05', 9)) AS t (email, device, day, count);
SELECT pg_temp.hour_row(email, device, '2026-03-05', hour, count)
FROM (VALUES
    ('ada@example.org', 'desk', 9, 60), ('ada@example.org', 'lap', 9, 15), ('ada@example.org', 'lap', 23, 5),
    ('ada@example.org', 'desk', 0, 40), ('bob@example.org', 'desk', 9, 9)) AS t (email, device, hour, count);
SELECT pg_temp.app_row(email, device, day, hour, bundle, count)
FROM (VALUES
    ('ada@example.org', 'desk', '2026-03-05', 9, 'org.editor', 50),
    ('ada@example.org', 'lap', '2026-03-05', 9, 'org.editor', 15),
    ('ada@example.org', 'lap', '2026-03-05', 10, 'org.editor', 2),
    ('ada@example.org', 'desk', '2026-03-05', 9, 'unnamed', 10),
    ('ada@example.org', 'desk', '2026-03-05', 9, 'blank', 1),
    ('ada@example.org', 'desk', '2026-02-04', 9, 'org.editor', 5),
    ('ada@example.org', 'desk', '2026-02-03', 9, 'org.editor', 3),
    ('ada@example.org', 'desk', '2026-03-06', 9, 'org.editor', 1000),
    ('bob@example.org', 'desk', '2026-03-05', 9, 'org.editor', 9)) AS t (email, device, day, hour, bundle, count);
SELECT pg_temp.registry_row('ada@example.org', 'org.editor', 'Editor', true);
SELECT pg_temp.registry_row('ada@example.org', 'blank', '', false);
SELECT pg_temp.registry_row('bob@example.org', 'org.editor', 'Bob''s', false);
SELECT pg_temp.registry_row('bob@example.org', 'unnamed', 'Bob''s too', false);

-- Sorted here; tests of the order are below.
CREATE FUNCTION pg_temp.sorted(answer jsonb) RETURNS jsonb LANGUAGE sql AS $$
    SELECT coalesce(jsonb_agg(row ORDER BY row), '[]') FROM jsonb_array_elements($1) AS row
$$;
SELECT is(pg_temp.sorted(pg_temp.rpc(call)), pg_temp.sorted(answer), call)
FROM (VALUES
    ($$get_account_today_total('ada@example.org', '2026-03-05')$$, '[{"get_account_today_total": 120}]'::jsonb),
    ($$get_account_today_total('ada@example.org', '2026-01-01')$$, '[{"get_account_today_total": 0}]'),
    ($$get_account_daily_totals('ada@example.org', 30, '2026-03-05')$$,
     '[{"day": "2026-02-04", "total_count": 5}, {"day": "2026-03-04", "total_count": 7},
       {"day": "2026-03-05", "total_count": 120}]'),
    ($$get_account_daily_totals('ada@example.org', 1, '2026-03-05')$$, '[{"day": "2026-03-05", "total_count": 120}]'),
    ($$get_account_daily_totals('ada@example.org', -2147483648, '2026-03-05')$$, '[]'),
    ($$get_account_daily_totals('ada@example.org', NULL, NULL)$$, '[]'),
    ($$get_account_hourly_totals('ada@example.org', '2026-03-05')$$,
     '[{"hour": 0, "total_count": 40}, {"hour": 9, "total_count": 75}, {"hour": 23, "total_count": 5}]'),
    ($$get_account_app_hourly_totals('ada@example.org', '2026-03-05')$$,
     '[{"hour": 9, "bundle_id": "org.editor", "app_name": "Editor", "total_count": 65},
       {"hour": 10, "bundle_id": "org.editor", "app_name": "Editor", "total_count": 2},
       {"hour": 9, "bundle_id": "unnamed", "app_name": "unnamed", "total_count": 10},
       {"hour": 9, "bundle_id": "blank", "app_name": "blank", "total_count": 1}]'),
    ($$get_account_app_daily_totals('ada@example.org', 30, '2026-03-05')$$,
     '[{"day": "2026-02-04", "bundle_id": "org.editor", "app_name": "Editor", "total_count": 5},
       {"day": "2026-03-05", "bundle_id": "org.editor", "app_name": "Editor", "total_count": 67},
       {"day": "2026-03-05", "bundle_id": "unnamed", "app_name": "unnamed", "total_count": 10},
       {"day": "2026-03-05", "bundle_id": "blank", "app_name": "blank", "total_count": 1}]'),
    ($$get_account_app_daily_totals('ada@example.org', 0, '2026-03-05')$$, '[]')) AS t (call, answer);

-- However many days are asked for, at most a year and a day is read.
SELECT pg_temp.day_row('cleo@example.org', 'desk', (DATE '2026-03-05' - back)::text, 10000000)
FROM generate_series(0, 400) AS back;
SELECT is(jsonb_array_length(pg_temp.rpc(format('get_account_daily_totals(''cleo@example.org'', %s, ''2026-03-05'')', days))),
          366, format('%s days are 366', days))
FROM unnest(ARRAY[366, 367, 100000, 2147483647]) AS days;

-- The latest first, whatever the connection's time zone and date style.
SET LOCAL timezone = 'Asia/Kathmandu';
SET LOCAL datestyle = 'SQL, DMY';
SELECT pg_temp.device('ada@example.org', device, name, seen)
FROM (VALUES
    ('d1', 'old', '2025-12-31T23:59:59Z'), ('d2', 'b', '2026-03-05T14:07:09Z'),
    ('d3', 'a', '2026-03-05T14:07:09Z'), ('d4', 'new', '2026-03-05T14:07:10.999Z')) AS t (device, name, seen);
SELECT pg_temp.device('bob@example.org', 'd1', 'not hers', '2026-03-05T14:07:09Z');
SELECT is(pg_temp.rpc($$get_account_devices('ada@example.org')$$),
    (SELECT jsonb_agg(jsonb_build_object(
        'device_id', encode(sha256(convert_to(E'ada@example.org\n' || device, 'UTF8')), 'hex'),
        'device_name', name, 'last_seen_at', seen))
     FROM (VALUES ('d4', 'new', '2026-03-05T14:07:10Z'), ('d3', 'a', '2026-03-05T14:07:09Z'),
                  ('d2', 'b', '2026-03-05T14:07:09Z'), ('d1', 'old', '2025-12-31T23:59:59Z')) AS t (device, name, seen)),
    'the devices, without what they write with');
SELECT is(pg_temp.sorted(pg_temp.rpc($$get_account_daily_totals('ada@example.org', 1, '2026-03-05')$$)),
          '[{"day": "2026-03-05", "total_count": 120}]'::jsonb, 'days keep their form in any date style');

-- A limit cuts off what matters least: the oldest days, and of a day the least used applications.
SELECT is((SELECT string_agg(concat_ws(' ', row ->> 'day', row ->> 'bundle_id', row ->> 'total_count'), ', ')
           FROM jsonb_array_elements(pg_temp.rpc(call)) AS row), expected, call || ' in order')
FROM (VALUES
    ($$get_account_app_daily_totals('ada@example.org', 30, '2026-03-05')$$,
     '2026-03-05 org.editor 67, 2026-03-05 unnamed 10, 2026-03-05 blank 1, 2026-02-04 org.editor 5'),
    ($$get_account_app_hourly_totals('ada@example.org', '2026-03-05')$$,
     'org.editor 65, unnamed 10, org.editor 2, blank 1')) AS t (call, expected);
SET LOCAL session_replication_role = replica; -- without the triggers that bound an account
INSERT INTO device_app_hour_counts (customer_email, device_id, day, hour, bundle_id, count, updated_at)
SELECT 'eve@example.org', 'd', '2026-03-05', 1, 'application ' || n, 1, now() FROM generate_series(1, 6000) AS n;
SELECT is(jsonb_array_length(pg_temp.rpc(call)), 5000, call || ' is bounded')
FROM unnest(ARRAY[$$get_account_app_daily_totals('eve@example.org', 30, '2026-03-05')$$,
                  $$get_account_app_hourly_totals('eve@example.org', '2026-03-05')$$]) AS call;

SELECT * FROM finish();
ROLLBACK;

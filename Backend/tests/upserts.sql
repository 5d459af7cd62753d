-- The five writes: they replace whole rows and keep addresses as typed. Invalid values and too many rows are
-- refused.
BEGIN;
\ir helpers.sql
SELECT no_plan();

SELECT pg_temp.day_row('ada@example.org', 'desk', '2026-03-05', 120);
SELECT pg_temp.day_row('ada@example.org', 'desk', '2026-03-05', 90);
SELECT pg_temp.day_row('ada@example.org', 'lap', '2026-03-05', 7);
SELECT results_eq('SELECT device_id, count FROM device_day_counts ORDER BY device_id',
                  $$VALUES ('desk' COLLATE "C", 90::bigint), ('lap', 7)$$, 'a second upload of a day replaces the first');

SELECT pg_temp.hour_row('ada@example.org', 'desk', '2026-03-05', hour, count)
FROM (VALUES (0, 5), (23, 6), (23, 8)) AS t (hour, count);
SELECT pg_temp.app_row('ada@example.org', 'desk', '2026-03-05', hour, 'org.editor', count)
FROM (VALUES (9, 5), (10, 6), (10, 8)) AS t (hour, count);
SELECT pg_temp.registry_row('ada@example.org', 'org.editor', name, hidden)
FROM (VALUES ('Editor', false), ('The Editor', true)) AS t (name, hidden);
SELECT pg_temp.device('ada@example.org', 'desk', name, seen)
FROM (VALUES ('old', '2026-03-05T14:07:09Z'), ('new', '2026-03-05T15:00:00Z')) AS t (name, seen);
SELECT results_eq('SELECT hour, count FROM device_hour_counts ORDER BY hour',
                  'VALUES (0::smallint, 5::bigint), (23::smallint, 8::bigint)', 'an hour is replaced');
SELECT results_eq('SELECT hour, count FROM device_app_hour_counts ORDER BY hour',
                  'VALUES (9::smallint, 5::bigint), (10::smallint, 8::bigint)', 'an application''s hour is replaced');
SELECT results_eq('SELECT app_name, is_hidden FROM device_app_registry', $$VALUES ('The Editor', true)$$,
                  'a name is replaced');
SELECT results_eq('SELECT device_name, last_seen_at FROM devices',
                  $$VALUES ('new', TIMESTAMPTZ '2026-03-05 15:00:00Z')$$, 'a device is replaced');

-- Addresses are compared as typed.
SELECT pg_temp.day_row(email, 'desk', '2026-03-05', place)
FROM unnest(ARRAY['a+b@example.org', 'a b@example.org', 'a&b@example.org', 'a%2Bb@example.org', 'ä@exämple.org',
                  'A+b@example.org', '" "@example.org', '喵@例子.中国']) WITH ORDINALITY AS t (email, place);
SELECT is((SELECT count(DISTINCT customer_email) FROM device_day_counts), 9::bigint, 'no two addresses are mistaken');
SELECT is((SELECT count FROM device_day_counts WHERE customer_email = 'ä@exämple.org'), 5::bigint, 'letters beyond ASCII');

-- The longest allowed key still fits into an index. Digests, because an index would compress repetition.
CREATE FUNCTION pg_temp.long(length integer) RETURNS text LANGUAGE sql AS $$
    SELECT string_agg(chr(x'20000'::integer + ('x' || substr(md5(i::text), 1, 4))::bit(16)::integer % 40000), '')
    FROM generate_series(1, $1) AS i
$$;
SELECT lives_ok(format('SELECT pg_temp.app_row(pg_temp.long(320), pg_temp.long(64), %L, 23, pg_temp.long(255), %s)',
                       '9999-12-31', :maximum), 'the longest key is stored');
SELECT lives_ok($$SELECT pg_temp.day_row('ada@example.org', 'desk', '0001-01-01', 0)$$, 'the first day and no press');

SELECT throws_ok(format('SELECT pg_temp.%s', statement), state, NULL, format('%s is refused', statement))
FROM (VALUES
    ($$hour_row('ada@example.org', 'desk', '2026-03-05', 24, 1)$$, '23514'),
    ($$hour_row('ada@example.org', 'desk', '2026-03-05', -1, 1)$$, '23514'),
    ($$hour_row('ada@example.org', 'desk', '2026-03-05', NULL, 1)$$, '23502'),
    ($$app_row('ada@example.org', 'desk', '2026-03-05', 24, 'org.editor', 1)$$, '23514'),
    ($$app_row('ada@example.org', 'desk', '2026-03-05', 9, '', 1)$$, '23514'),
    ($$app_row('ada@example.org', 'desk', '2026-03-05', 9, repeat('a', 256), 1)$$, '23514'),
    ($$day_row('ada@example.org', 'desk', '2026-03-05', -1)$$, '23514'),
    (format('day_row(%L, %L, %L, %s)', 'ada@example.org', 'desk', '2026-03-05', :maximum + 1), '23514'),
    (format('hour_row(%L, %L, %L, 9, %s)', 'ada@example.org', 'desk', '2026-03-05', :maximum + 1), '23514'),
    (format('app_row(%L, %L, %L, 9, %L, %s)', 'ada@example.org', 'desk', '2026-03-05', 'app', :maximum + 1), '23514'),
    ($$day_row('ada@example.org', 'desk', '2026-02-30', 1)$$, '22008'),
    ($$day_row('ada@example.org', 'desk', 'infinity', 1)$$, '23514'),
    ($$day_row('ada@example.org', 'desk', 'someday', 1)$$, '22007'),
    ($$day_row('', 'desk', '2026-03-05', 1)$$, '23514'),
    ($$day_row(repeat('a', 321), 'desk', '2026-03-05', 1)$$, '23514'),
    ($$day_row('ada@example.org', '', '2026-03-05', 1)$$, '23514'),
    ($$day_row('ada@example.org', repeat('a', 65), '2026-03-05', 1)$$, '23514'),
    ($$registry_row('ada@example.org', '', 'Editor', false)$$, '23514'),
    ($$registry_row('ada@example.org', 'org.editor', NULL, false)$$, '23502'),
    ($$registry_row('ada@example.org', 'org.editor', repeat('a', 513), false)$$, '23514'),
    ($$device('ada@example.org', 'desk', NULL, '2026-03-05T14:07:09Z')$$, '23502'),
    ($$device('ada@example.org', 'desk', 'name', 'infinity')$$, '23514'),
    ($$device('ada@example.org', 'desk', 'name', '10000-01-01T00:00:00Z')$$, '23514')) AS t (statement, state);

-- An account may have more rows than a person ever needs, but not more than that. Existing rows can still be
-- replaced.
SELECT pg_temp.day_row('eve@example.org', 'd' || n, '2026-03-05', n),
    pg_temp.device('eve@example.org', 'd' || n, 'n', '2026-03-05')
FROM generate_series(1, 100) AS n;
SET LOCAL session_replication_role = replica; -- as if so many rows had been counted
INSERT INTO fernhollow.account_rows (customer_email, day, of_table, rows) VALUES
    ('eve@example.org', '2026-03-05', 'device_hour_counts', 2400),
    ('eve@example.org', '2026-03-05', 'device_app_hour_counts', 10000),
    ('eve@example.org', '-infinity', 'device_app_registry', 5000),
    ('ivy@example.org', '-infinity', 'device_app_hour_counts', 40000);
SET LOCAL session_replication_role = origin;
SELECT throws_ok(format('SELECT pg_temp.%s', statement), '23514', 'the account has too many rows in ' || crowded, statement)
FROM (VALUES
    ($$day_row('eve@example.org', 'd101', '2026-03-05', 1)$$, 'device_day_counts'),
    ($$hour_row('eve@example.org', 'd1', '2026-03-05', 1, 1)$$, 'device_hour_counts'),
    ($$app_row('eve@example.org', 'd1', '2026-03-05', 1, 'a', 1)$$, 'device_app_hour_counts'),
    ($$app_row('ivy@example.org', 'd1', '2026-03-05', 1, 'a', 1)$$, 'device_app_hour_counts'),
    ($$registry_row('eve@example.org', 'a', 'A', false)$$, 'device_app_registry'),
    ($$device('eve@example.org', 'd101', 'n', '2026-03-05')$$, 'devices')) AS t (statement, crowded);
SELECT lives_ok(format('SELECT pg_temp.%s', statement), statement)
FROM unnest(ARRAY[$$day_row('eve@example.org', 'd100', '2026-03-05', 7)$$,
                  $$day_row('eve@example.org', 'd101', '2026-03-06', 1)$$,
                  $$hour_row('ada@example.org', 'd1', '2026-03-05', 1, 1)$$]) AS statement;

SELECT * FROM finish();
ROLLBACK;

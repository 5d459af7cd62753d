-- What a request may do, and above all what it may not do.
BEGIN;
\ir helpers.sql
SELECT no_plan();

-- The time-out of a request, or the SQLSTATE of its refusal.
CREATE FUNCTION pg_temp.checked(request text, prefer text) RETURNS text LANGUAGE plpgsql AS $$
DECLARE
    timeout text;
BEGIN
    PERFORM set_config('request.headers', json_build_object('prefer', prefer)::text, true);
    PERFORM pg_temp.request(split_part(request, ' ', 1), 'SELECT fernhollow.check_request()', split_part(request, ' ', 2));
    timeout := current_setting('statement_timeout');
    PERFORM set_config('statement_timeout', '0', true);
    RETURN timeout;
EXCEPTION WHEN insufficient_privilege THEN
    RETURN SQLSTATE;
END
$$;

SELECT pg_temp.day_row(email, 'desk', '2026-03-05', 10), pg_temp.day_row(email, 'lap', '2026-03-05', 20),
    pg_temp.hour_row(email, 'desk', '2026-03-05', 9, 10), pg_temp.app_row(email, 'desk', '2026-03-05', 9, 'app', 10),
    pg_temp.registry_row(email, 'app', 'App', false), pg_temp.device(email, 'desk', 'Desk', '2026-03-05T14:07:09Z')
FROM unnest(ARRAY['ada@example.org', 'bob@example.org']) AS email;

-- The rights of the roles of requests, all of them. `authenticated` stands for every other such role.
SELECT is(string_agg(privilege_type || ' ' || table_name, ', ' ORDER BY privilege_type, table_name), NULL,
          'no right to a whole table')
FROM information_schema.role_table_grants
WHERE grantee IN ('anon', 'authenticated', 'PUBLIC') AND table_schema = 'public';
SELECT is(string_agg(DISTINCT grantee || ' ' || privilege_type, ', '), 'anon INSERT, anon SELECT, anon UPDATE',
          'nor a right to columns but those that an upsert needs')
FROM information_schema.role_column_grants
WHERE grantee IN ('anon', 'authenticated', 'PUBLIC') AND table_schema = 'public';
SELECT is(array_agg(proname::text ORDER BY proname),
    ARRAY['get_account_app_daily_totals', 'get_account_app_hourly_totals', 'get_account_daily_totals',
          'get_account_devices', 'get_account_hourly_totals', 'get_account_today_total'],
    'the functions that may be called')
FROM pg_proc WHERE pronamespace = 'public'::regnamespace AND has_function_privilege('anon', oid, 'EXECUTE');
SELECT ok(NOT has_schema_privilege(role, 'public', 'CREATE'), role || ' creates nothing')
FROM unnest(ARRAY['anon', 'fernhollow_reader']) AS role;
SELECT is(count(*), 6::bigint, 'the functions are stable, pinned and run as a role that only reads')
FROM pg_proc
WHERE pronamespace = 'public'::regnamespace AND provolatile = 's' AND prosecdef
    AND 'search_path=pg_catalog, pg_temp' = ANY (proconfig) AND proowner = 'fernhollow_reader'::regrole;
SELECT is(string_agg(DISTINCT privilege_type, ','), 'SELECT', 'what that role may do')
FROM information_schema.role_table_grants WHERE grantee = 'fernhollow_reader';
SELECT is(count(*), 0::bigint, 'the roles of requests and functions cannot log in, and do not bypass the policies')
FROM pg_roles
WHERE rolname IN ('anon', 'fernhollow_reader') AND (rolcanlogin OR rolbypassrls OR rolsuper OR rolcreaterole OR rolcreatedb);
SELECT is(count(*) FILTER (WHERE relrowsecurity), count(*), 'row-level security is on everywhere')
FROM pg_class WHERE relnamespace = 'public'::regnamespace AND relkind IN ('r', 'p');

-- Requests that a client never sends. These statements differ from PostgREST's. Whole tables and
-- indexes cannot be scanned either: a request that finds no row is refused, too.
SELECT throws_ok(format('SELECT set_config(''enable_seqscan'', %L, true), pg_temp.request(%L, %L, %L)',
                        scan, method, statement, path), '42501', NULL, concat_ws(' ', method, path, statement, scan))
FROM unnest(ARRAY['off', 'on']) AS scan, (VALUES
    ('GET', '/device_day_counts', 'SELECT count FROM device_day_counts'),
    ('GET', '/rest/v1/device_day_counts', 'SELECT customer_email FROM device_day_counts LIMIT 1'),
    ('GET', '/device_day_counts', $$SELECT customer_email FROM device_day_counts WHERE customer_email > 'a' AND count = 20$$),
    ('GET', '/device_day_counts', $$SELECT count FROM device_day_counts WHERE device_id = 'nobody'$$),
    ('GET', '/devices', 'SELECT customer_email FROM devices'),
    ('GET', '/device_hour_counts', 'SELECT customer_email FROM device_hour_counts'),
    ('GET', '/device_day_counts', 'SELECT customer_email FROM device_app_hour_counts'),
    ('GET', '/device_app_registry', $$SELECT app_name FROM device_app_registry WHERE bundle_id = 'nothing'$$),
    ('GET', '/devices', $$EXPLAIN SELECT 1 FROM devices WHERE customer_email > 'a'$$),
    ('HEAD', '/device_day_counts', 'SELECT count FROM device_day_counts'),
    ('PATCH', '/device_day_counts', 'UPDATE device_day_counts SET count = 0 RETURNING 1'),
    ('PATCH', '/devices', $$UPDATE devices SET device_name = 'mine' WHERE device_id = 'nobody' RETURNING 1$$),
    ('DELETE', '/device_day_counts', $$DELETE FROM device_day_counts WHERE customer_email = 'ada@example.org' RETURNING 1$$),
    ('PUT', '/devices', $$INSERT INTO devices VALUES (now(), 'eve@example.org', 'd', 'n') RETURNING 1$$),
    ('', '', 'SELECT count FROM device_day_counts')) AS t (method, path, statement);
-- A POST may change only the table that it names. Hosted projects have functions that run any query, under
-- many names.
SELECT throws_ok(format('SELECT pg_temp.request(%L, %L, %L)', 'POST', statement, path), '42501', NULL,
                 path || ' ' || statement)
FROM unnest(ARRAY['/rpc/any', '/%72pc/any', '/rpc', '/graphql/v1', '/', '', '/rpc/devices', '/devices/', '/devicesx',
                  '//devices', '/rest/v1/device_app_registry']) AS path,
    unnest(ARRAY['SELECT customer_email FROM device_day_counts', $$SELECT 1 FROM devices WHERE device_id = 'nobody'$$,
                 'UPDATE device_hour_counts SET count = 0 RETURNING 1',
                 $$INSERT INTO devices VALUES (now(), 'eve@example.org', 'd', 'n') RETURNING 1$$]) AS statement;
SELECT is((SELECT sum(count) FROM device_day_counts), 60::numeric, 'and nothing was changed');

-- The statements that PostgREST makes, as its published source writes them: the one select, and other ones.
CREATE TEMP TABLE word (short text, long text);
INSERT INTO word VALUES ('#', '"public"."device_day_counts"'), ('<', 'WITH pgrst_source AS ( SELECT '),
    ('>', ' )  SELECT null::bigint AS total_result_set, pg_catalog.count(_postgrest_t) AS page_total');
SELECT is(fernhollow.names_one_row(replace(replace(replace(statement, '#', w.long), '<', l.long), '>', r.long)),
          expected, statement)
FROM word AS w, word AS l, word AS r, (VALUES
    (true, '<#."count" FROM #  WHERE  #."customer_email" = $1 AND  #."device_id" = $2 AND  #."day" = $3   >'),
    (true, '<#."count" FROM #  WHERE  #."day" = $1 AND  #."customer_email" = $2 AND  #."device_id" = $3   LIMIT $4 OFFSET $5>'),
    (false, '<#."count" FROM #  WHERE  #."customer_email" = $1 AND  #."device_id" = $2   >'),
    (false, '<#."count" FROM #  WHERE  #."customer_email" = $1 AND  #."device_id" = $2 AND  #."device_id" = $3   >'),
    (false, '<#."count" FROM #  WHERE  #."customer_email" > $1 AND  #."device_id" = $2 AND  #."day" = $3   >'),
    (false, '<#."count" FROM #  WHERE  #."customer_email" = $1 AND  #."device_id" = $2 OR  #."day" = $3   >'),
    (false, '<#."count" FROM #  WHERE  #."customer_email" = ANY($1) AND  #."device_id" = $2 AND  #."day" = $3   >'),
    (false, '<#."count" FROM #  WHERE NOT #."customer_email" = $1 AND  #."device_id" = $2 AND  #."day" = $3   >'),
    (false, '<#."count" FROM #  WHERE  #."customer_email" = $1 AND  #."device_id" = $2 AND  #."day" = $3 OR true >'),
    (false, '<#."count" AS "x"" FROM #  WHERE  #.""customer_email" FROM #  WHERE  #."day" = $1   >'),
    (false, '<#."customer_email" FROM #  WHERE  #."customer_email" = $1 AND  #."device_id" = $2 AND  #."day" = $3   >'),
    (false, '<#.* FROM #    >'),
    (false, 'EXPLAIN (FORMAT JSON) SELECT 1 FROM #'),
    (false, '')) AS t (expected, statement)
WHERE w.short = '#' AND l.short = '<' AND r.short = '>';

-- The function that PostgREST calls before each request, where db-pre-request is set.
SELECT is(pg_temp.checked(request, prefer), expected, concat_ws(' ', request, prefer))
FROM (VALUES
    ('GET /rest/v1/device_day_counts', NULL, '2s'), ('POST /devices', 'resolution=merge-duplicates', '2s'),
    ('POST /rpc/get_account_devices', 'return=minimal, resolution=merge-duplicates', '2s'),
    ('GET /devices', NULL, '42501'), ('GET /rpc/get_account_devices', NULL, '42501'), ('GET /', NULL, '42501'),
    ('POST /%72pc/get_account_devices', NULL, '42501'), ('POST /rpc/any', NULL, '42501'), (' ', NULL, '42501'),
    ('GET /device_day_counts', 'count=planned', '42501'),
    ('POST /devices', 'resolution=merge-duplicates,count=exact', '42501')) AS t (request, prefer, expected);

SET LOCAL ROLE anon;
DO $$ BEGIN TRUNCATE public.devices; EXCEPTION WHEN insufficient_privilege THEN NULL; END $$;
RESET ROLE;
SELECT is((SELECT count(*) FROM devices), 2::bigint, 'nor emptied');

-- What an operator adds later is closed to requests until the operator opens it. Here the operator owns the
-- tables.
SELECT set_config('role', tableowner, true) FROM pg_tables WHERE tablename = 'devices';
CREATE TABLE public.later (id serial);
CREATE FUNCTION public.later() RETURNS integer LANGUAGE sql AS 'SELECT 1';
RESET ROLE;
SELECT ok(NOT has_table_privilege(role, 'public.later', 'SELECT, INSERT, UPDATE, DELETE, TRUNCATE')
              AND NOT has_sequence_privilege(role, 'public.later_id_seq', 'USAGE, SELECT, UPDATE')
              AND NOT has_function_privilege(role, 'public.later()', 'EXECUTE'), 'closed to ' || role)
FROM pg_roles, LATERAL (SELECT rolname::text AS role) AS r
WHERE rolname IN ('anon', 'authenticated', 'fernhollow_reader');

SELECT * FROM finish();
ROLLBACK;
